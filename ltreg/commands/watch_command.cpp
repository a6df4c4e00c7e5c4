// Changes as they are saved. The system tells that something changed; what it was is found by comparing
// with what was there before.
#include <chrono>
#include <filesystem>
#include <sstream>
#include <thread>

#include "ltlib/platform/tool_process.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/file_differences.h"
#include "ltreg/commands/read_key.h"
#include "ltreg/registry/store_messages.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

namespace fs = std::filesystem;
using LTLib::RegistryWatch;

constexpr int kReadAttempts = 100;  // to read a store, a second in all

// A folder for this user alone, there for as long as two versions are compared and no longer: who
// watches is ended at any moment.
class PrivateFolder {
 public:
  PrivateFolder() {
    char name[37];
    UID::Generate().toString(name, sizeof name);
    m_path = fs::temp_directory_path() / (std::string("ltreg-") + name);
    if (!fs::create_directory(m_path)) {
      throw Failure(ExitCode::kStoreFailed,
                    "the folder " + inQuotes(textOf(m_path)) + " is somebody else's");
    }
    fs::permissions(m_path, fs::perms::owner_all);
  }
  ~PrivateFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  [[nodiscard]] std::string file(const char* name) const { return textOf(m_path / name); }

 private:
  fs::path m_path;
};

class Watch {
 public:
  explicit Watch(const Request& request) : m_request(request), m_key(parseKey(*request.key)) {
    // Opened once for the key's name and for what is wrong with the store, and closed again.
    const Session session(request, m_key, Access::kRead);
    const Backend backend(request, m_key.root);
    m_store = backend.onFiles() ? backend.storeOf(m_key.root) : std::string();
    m_name = escapeControls(fullName(m_key.root, m_key.path));
  }

  [[noreturn]] void run(Output& output) {
    // Armed ahead of the first look, so that no change falls between the two.
    RegistryWatch watch = open();
    std::string before = content().value_or("");
    complain("watching " + inQuotes(m_store.empty() ? m_name : m_store));
    for (;;) {
      std::optional<std::string> after = nextOf(watch) ? content() : std::nullopt;
      if (after && *after != before) {
        tell(before, *after, output);
        before = std::move(*after);
      }
    }
  }

 private:
  [[nodiscard]] RegistryWatch open() const {
    return m_store.empty() ? RegistryWatch::ofSystemKey(m_key.root, m_key.path)
                           : RegistryWatch::ofStore(m_store);
  }

  // Whether it was woken by what it watches.
  static bool nextOf(RegistryWatch& watch) {
    return watch.wait(std::chrono::hours(1)) && watch.take();
  }

  // The store as one save has left it, or the key as it is exported; empty where there is none. A
  // store that does not load is told, and nothing is compared until it does.
  [[nodiscard]] std::optional<std::string> content() const {
    if (m_store.empty()) {
      return exported();
    }
    // Read under the lock alone: Windows replaces no file that is open, and a save waits for the lock.
    // Whoever writes without it may do so between the check and the reading.
    for (std::optional<std::string> seen;;) {
      const GuardedStore held = openStore(m_store, Access::kRead);
      if (!held.report.loads()) {
        complain(whyNotLoaded(m_store, held.report));
        return std::nullopt;
      }
      std::string text = storeText();
      if (seen == text) {
        return text;
      }
      seen = std::move(text);
    }
  }

  // A store that is being put into its place may be gone between two looks, or not to be opened.
  [[nodiscard]] std::string storeText() const {
    for (int attempt = 1;; ++attempt) {
      try {
        return fs::exists(fileOf(m_store)) ? readTextFile(m_store) : std::string();
      } catch (const Failure&) {
        if (attempt == kReadAttempts) {
          throw;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
    }
  }

  [[nodiscard]] std::string exported() const {
    const PrivateFolder folder;
    const std::string file = folder.file("key");
    const LTLib::Platform::ChildOutcome outcome =
        LTLib::Platform::runChild(LTLib::Platform::programPath(),
                                  {"export", "--backend", kSystemBackend, "--encoding", "utf8",
                                   "--literal", "-o", file, "--", fullName(m_key.root, m_key.path)},
                                  std::chrono::hours(1));
    return outcome.code == 0 ? readTextFile(file) : std::string();
  }

  void tell(const std::string& before, const std::string& after, Output& output) const {
    for (const std::string& line : differencesOf(before, after)) {
      std::vector<std::string> columns;
      std::istringstream rest(line);
      for (std::string column; std::getline(rest, column, '\t');) {
        columns.push_back(column);
      }
      if (columns.size() > 1 && isBelow(columns[1])) {
        output.line(m_request.json ? jsonOf(std::move(columns)).line() : line);
      }
    }
    output.finish();
  }

  [[nodiscard]] std::vector<std::string> differencesOf(const std::string& before,
                                                       const std::string& after) const {
    const PrivateFolder folder;
    const std::string files[] = {folder.file("before"), folder.file("after")};
    writeTextFile(files[0], before);
    writeTextFile(files[1], after);
    return differencesBetween(files[0], files[1], m_key.root);
  }

  [[nodiscard]] bool isBelow(const std::string& key) const {
    return sameName(key.substr(0, m_name.size()), m_name) &&
           (key.size() == m_name.size() || key[m_name.size()] == '\\');
  }

  static Json jsonOf(std::vector<std::string> columns) {
    Json change = versionedJson("change", columns[0]).with("key", columns[1]);
    if (columns.size() > 3) {
      const bool isList = columns[3] == "list";
      change = std::move(change).with("name", columns[2]).with("type", columns[3]);
      columns.erase(columns.begin(), columns.begin() + 4);
      columns.resize(isList ? columns.size() : 1);
      change = std::move(change).with("value", isList ? Json(columns) : Json(columns[0]));
    }
    return change;
  }

  const Request& m_request;
  KeyArgument m_key;
  std::string m_store;  // empty for the operating system's registry
  std::string m_name;
};

}  // namespace

ExitCode watchKey(const Request& request, Output& output) {
  Watch(request).run(output);
}

}  // namespace ltreg
