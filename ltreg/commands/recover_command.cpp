// What a save that was cut off, or a hand, has left beside a store. Nothing that was there is lost:
// it gets a name that no save uses.
#include <algorithm>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/file_differences.h"
#include "ltreg/registry/backend.h"
#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/store_access.h"
#include "ltreg/registry/store_messages.h"

namespace ltreg {
namespace {

using LTLib::StoreVersion;

const char* wordFor(const StoreVersion& version) {
  return version.newer ? "new" : "old";
}

std::string stateOf(const LTLib::StoreReport& report) {
  if (!report.exists) {
    return "does not exist";
  }
  return report.loads() ? "loads, " + std::to_string(report.valueCount) +
                              (report.valueCount == 1 ? " value" : " values")
                        : std::string("does not load");
}

class Recovery {
 public:
  Recovery(const std::string& store, enumRegRoot root, Output& output)
      : m_store(store),
        m_root(root),
        m_output(output),
        m_found(openStore(store, Access::kRead)),
        m_versions(LTLib::storeVersions(store)) {
    m_found.guard.reset();
  }

  ExitCode show() {
    showFile("store", m_store, m_found.report);
    if (!m_found.abandoned.empty()) {
      m_output.line("lock\t" + m_found.abandoned);
    }
    bool unusual = !m_found.abandoned.empty() || !m_found.report.loads();
    for (const StoreVersion& version : m_versions) {
      unusual = unusual || version.leftOver || !m_found.report.exists;
      showVersion(version);
    }
    return unusual ? ExitCode::kAbsent : ExitCode::kDone;
  }

  ExitCode take(const std::string& word) {
    const auto wanted =
        std::find_if(m_versions.begin(), m_versions.end(),
                     [&](const StoreVersion& version) { return wordFor(version) == word; });
    if (wanted == m_versions.end()) {
      throw Failure(ExitCode::kAbsent,
                    "there is no " + word + " version beside " + inQuotes(m_store));
    }
    if (const LTLib::StoreReport report = checkedStore(wanted->path); !report.loads()) {
      throw Failure(ExitCode::kBadInput, whyNotLoaded(wanted->path, report));
    }
    const std::string aside = putBack(wanted->path);
    m_output.line("store\t" + escapeControls(m_store) + "\twas " + escapeControls(wanted->path));
    if (!aside.empty()) {
      m_output.line("kept\t" + escapeControls(aside) + "\twas " + escapeControls(m_store));
    }
    return ExitCode::kDone;
  }

 private:
  void showFile(const char* word, const std::string& path, const LTLib::StoreReport& report) {
    m_output.line(std::string(word) + '\t' + escapeControls(path) + '\t' + stateOf(report));
    if (!report.loads()) {
      complain(whyNotLoaded(path, report));
    }
  }

  // What would change if the version became the store.
  void showVersion(const StoreVersion& version) {
    const LTLib::StoreReport report = checkedStore(version.path);
    showFile(wordFor(version), version.path, report);
    if (m_found.report.exists && m_found.report.loads() && report.loads()) {
      for (const std::string& line : differencesBetween(m_store, version.path, m_root)) {
        m_output.line(line);
      }
    }
  }

  std::string putBack(const std::string& version) {
    try {
      return LTLib::putBackStore(m_store, version);
    } catch (const QSException& failure) {
      throw Failure(ExitCode::kStoreFailed, escapeControls(failure.What()));
    }
  }

  std::string m_store;
  enumRegRoot m_root;
  Output& m_output;
  GuardedStore m_found;
  std::vector<StoreVersion> m_versions;
};

}  // namespace

ExitCode recoverStore(const Request& request, Output& output) {
  const enumRegRoot root = parseRoot(*request.key);
  const Backend backend(request, root);
  if (!backend.onFiles()) {
    throw Failure(ExitCode::kAbsent, std::string(LTLib::registryRootName(root)) +
                                         " lies in the operating system's registry, not in a file");
  }
  Recovery recovery(backend.storeOf(root), root, output);
  return request.take ? recovery.take(*request.take) : recovery.show();
}

}  // namespace ltreg
