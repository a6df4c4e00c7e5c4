#include "ltlib/fileregistry/store/store_recovery.h"

#include <string_view>

#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/fileregistry/text/text_reader.h"
#include "ltlib/fileregistry/tree/folded_name.h"
#include "ltlib/fileregistry/tree/key_path.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib {
namespace {

using namespace detail;
using Platform::fileCalls;
using Platform::FileResult;

struct Suffix {
  const char* text;
  bool newer;
};

constexpr Suffix kSuffixes[] = {{"_new", true}, {"_old", false}, {"_tmp", false}};

// In the place of a name's last letter where a file was set aside.
constexpr std::string_view kAside = "~123456789";
constexpr std::string_view kWas = "s~123456789";

[[noreturn]] void failAsTold(const std::string& text) {
  throw QSException("kFileRegistry", __LINE__, kFailure,
                    (text + ": " + Platform::lastFileFailure()).c_str());
}

bool isThere(const std::string& path) {
  Platform::FileStatus ignored;
  return fileCalls().status(path.c_str(), &ignored) != FileResult::kAbsent;
}

bool rename(const std::string& from, const std::string& to) {
  return fileCalls().rename(from.c_str(), to.c_str()) == FileResult::kDone;
}

std::string freeNameFor(const std::string& located) {
  for (const char last : kWas) {
    std::string name = located + "_wa" + last;
    if (!isThere(name)) {
      return name;
    }
  }
  throw QSException("kFileRegistry", __LINE__, kFailure,
                    ("the names for what " + located + " was are used up").c_str());
}

// Where the system can exchange names the store is never absent.
void swapInto(const std::string& located, const std::string& version, const std::string& aside) {
  const FileResult exchanged = fileCalls().exchange(version.c_str(), located.c_str());
  if (exchanged == FileResult::kDone) {
    if (rename(version, aside)) {
      return;
    }
    (void)fileCalls().exchange(version.c_str(), located.c_str());
    failAsTold("the file " + aside + " cannot be made");
  }
  if (exchanged != FileResult::kUnsupported || !rename(located, aside)) {
    failAsTold("the store " + located + " cannot be moved");
  }
  if (!rename(version, located)) {
    (void)rename(aside, located);
    failAsTold("the file " + version + " cannot take the store's place");
  }
}

class Finder final : public LineVisitor {
 public:
  Finder(ReadContext& context, const std::string& path, const std::string& name)
      : m_context(context), m_path(path), m_name(name) {}

  bool takeHeader(std::string_view line) override {
    std::string path;
    const bool whole = splitHeader(line, [&](std::string_view component) {
      path.append(path.empty() ? "" : "\\").append(component);
    });
    m_inKey = equalNames(path, m_path);
    if (m_place.header == 0 && m_inKey) {
      m_place.header = m_context.source.count();
    }
    return whole;
  }

  bool takeValue(std::string_view line) override {
    const std::size_t begin = m_context.source.count();
    const QSCfgDataField field = cfgParseField(m_context, line);
    if (m_place.value == 0 && m_inKey && field != nullptr && equalNames(field.name(), m_name)) {
      m_place.value = begin;
    }
    return true;
  }

  [[nodiscard]] StorePlace place() const { return m_place; }

 private:
  ReadContext& m_context;
  const std::string& m_path;
  const std::string& m_name;
  bool m_inKey = false;
  StorePlace m_place;
};

}  // namespace

std::vector<StoreVersion> storeVersions(const std::string& pathname) {
  std::vector<StoreVersion> versions;
  const auto add = [&](const std::string& path, bool newer, bool leftOver) {
    if (isThere(path)) {
      versions.push_back({path, newer, leftOver});
    }
  };
  std::string located;
  (void)fileCalls().resolve(pathname.c_str(), &located);
  for (const Suffix& suffix : kSuffixes) {
    std::string path = located + suffix.text;
    add(path, suffix.newer, suffix.text != std::string_view("_old"));
    for (const char last : kAside) {
      path.back() = last;
      add(path, suffix.newer, true);
    }
  }
  return versions;
}

std::string putBackStore(const std::string& pathname, const std::string& version) {
  const std::string located = locateStore(pathname);
  const StoreHold hold(located);
  std::string aside;
  if (isThere(located)) {
    aside = freeNameFor(located);
    swapInto(located, version, aside);
  } else if (!rename(version, located)) {
    failAsTold("the file " + version + " cannot take the store's place");
  }
  (void)fileCalls().flushDirectory(located.c_str());
  return aside;
}

StorePlace findInStore(const std::string& pathname, const std::string& path,
                       const std::string& name) {
  const std::string located = locateStore(pathname);
  const StoreHold hold(located);
  Platform::FileHandle file;
  if (Platform::openFile(located, Platform::Links::kRefused, file) != FileResult::kDone) {
    return {};
  }
  TextStore texts;
  FileLineSource lines(*file, texts);
  std::uint16_t lineCount = 0;
  ReadContext context{lines, lineCount, [](const char*) {}};
  Finder finder(context, path, name);
  try {
    (void)cfgVisitLines(context, finder);
  } catch (const QSException&) {  // what stops the reading stops a load as well
  }
  return finder.place();
}

}  // namespace LTLib
