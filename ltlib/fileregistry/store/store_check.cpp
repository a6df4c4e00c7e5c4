// The check is a visitor of the reader that loads, so that the two cannot come to different verdicts;
// whether a save could write what was read it asks of the rule that saves ask.
#include "ltlib/fileregistry/store/store_check.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/fileregistry/store/store_swap.h"
#include "ltlib/fileregistry/text/file_form.h"
#include "ltlib/fileregistry/text/line_source.h"
#include "ltlib/fileregistry/text/text_reader.h"
#include "ltlib/fileregistry/tree/config_tree.h"
#include "ltlib/fileregistry/tree/key_path.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib {
namespace {

using namespace detail;
using Platform::FileResult;
using Kind = StoreFaultKind;

// What somebody meant as a header or a value. Some editors begin a file with a byte order mark, which
// no eye sees.
bool looksIndented(std::string_view line) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (line.starts_with(kByteOrderMark)) {
    line.remove_prefix(kByteOrderMark.size());
  }
  const std::size_t start = line.find_first_not_of(" \t");
  return start != std::string_view::npos && (line[start] == '[' || line[start] == '"');
}

// Keeps the places of headers and values where a load keeps the values.
class Check final : private LineVisitor {
 public:
  Check(Platform::File& file, StoreReport& report) : m_lines(file, m_texts), m_report(report) {}

  void run();

 private:
  bool takeHeader(std::string_view line) override;
  bool takeValue(std::string_view line) override;
  void passOver(std::string_view line) override;
  void judgeField(const QSCfgDataField& field, std::string_view line);
  void warn(Kind kind, std::string_view line) { warn({kind, m_begin, std::string(line)}); }
  void warn(StoreFault warning);
  bool stop(Kind kind, std::string_view line) {
    m_report.fault = StoreFault{kind, m_begin, std::string(line.substr(0, kStoreFaultText))};
    return false;
  }
  void keepTopKeys();

  TextStore m_texts;
  FileLineSource m_lines;
  StoreReport& m_report;
  std::uint16_t m_shortCount = 0;  // the reader's own, which a large file runs past
  bool m_reported = false;         // whether the reader had something to say of the present value
  ReadContext m_context{m_lines, m_shortCount, [this](const char*) { m_reported = true; }};
  QSCfgTree m_shallow{""};  // the upper two levels of keys
  std::size_t m_begin = 0;  // the line on which the present header or value begins
  std::size_t m_depth = 0;  // of the present key; 0 ahead of the first header
  std::optional<StoreFault> m_unsavableHeader;  // of the present key, not told yet
};

void Check::run() {
  try {
    (void)cfgVisitLines(m_context, *this);
  } catch (const QSException&) {
    m_begin = m_lines.count();
    stop(Kind::kReadError, {});
  }
  m_report.lineCount = m_lines.count();
  keepTopKeys();
}

// Two levels of sections are kept, and no values, whose texts alone stay until the check ends.
bool Check::takeHeader(std::string_view line) {
  m_begin = m_lines.count();
  std::vector<std::string_view> names;
  if (!splitHeader(line, [&](std::string_view name) { names.push_back(name); })) {
    return stop(Kind::kBadHeader, line);
  }
  QSCfgDataSection& top = m_shallow.findOrAddSection(m_shallow.top(), names[0]);
  if (names.size() > 1) {
    m_shallow.findOrAddSection(top, names[1]);
  }
  m_unsavableHeader.reset();
  if (!headerComesBack(names)) {
    m_unsavableHeader = StoreFault{Kind::kNotSavable, m_begin, std::string(line)};
  }
  m_depth = names.size();
  return true;
}

bool Check::takeValue(std::string_view line) {
  m_begin = m_lines.count();
  m_reported = false;
  QSCfgDataField field;
  try {
    field = cfgParseField(m_context, line);
  } catch (const UnendedValue&) {
    return stop(Kind::kUnendedValue, line);
  }
  if (m_reported) {
    warn(Kind::kEmptyValue, line);
  }
  if (field == nullptr) {
    warn(Kind::kDroppedLine, line);
  } else if (m_depth == 0) {
    warn(Kind::kNoKey, line);
  } else {
    judgeField(field, line);
  }
  return true;
}

void Check::passOver(std::string_view line) {
  if (looksIndented(line)) {
    m_begin = m_lines.count();
    warn(Kind::kIndentedLine, line);
  }
}

void Check::judgeField(const QSCfgDataField& field, std::string_view line) {
  ++m_report.valueCount;
  // A key without values has no header in a file that is saved.
  if (m_unsavableHeader) {
    warn(*std::exchange(m_unsavableHeader, std::nullopt));
  }
  if (m_depth == 1) {
    warn(Kind::kOutOfReach, line);
  }
  if (field.form() == QSCfgDataField::Form::kLacks) {
    warn(Kind::kNotSavable, line);
  }
}

void Check::warn(StoreFault warning) {
  if (m_report.warningCount++ < kMostStoreWarnings) {
    warning.text.resize(std::min(warning.text.size(), kStoreFaultText));
    m_report.warnings.push_back(std::move(warning));
  }
}

void Check::keepTopKeys() {
  for (std::size_t i = 0; i < m_shallow.top().sectionCount(); ++i) {
    const QSCfgDataSection& section = m_shallow.top().sectionAt(i);
    StoreTopKey& top = m_report.topKeys.emplace_back();
    top.name = section.name();
    for (std::size_t k = 0; k < section.sectionCount(); ++k) {
      top.subKeys.emplace_back(section.sectionAt(k).name());
    }
  }
}

// The status is asked before the file is opened, since the opening of what is no file fails with
// words that do not say so.
void checkHeldFile(const std::string& pathname, StoreReport& report) {
  Platform::FileStatus found;
  const FileResult status = Platform::fileCalls().status(pathname.c_str(), &found);
  report.exists = status == FileResult::kDone;
  if (status == FileResult::kAbsent) {
    report.left = filesLeftBeside(pathname);
    return;
  }
  if (report.exists && !found.regular) {
    report.fault = StoreFault{Kind::kNoFile, 0, {}};
    return;
  }
  Platform::FileHandle file;
  if (Platform::openFile(pathname, Platform::Links::kRefused, file) != FileResult::kDone) {
    report.fault = StoreFault{Kind::kUnreadable, 0, Platform::lastFileFailure()};
    return;
  }
  report.exists = true;
  Check(*file, report).run();
}

}  // namespace

const char* describeStoreFault(StoreFaultKind kind) noexcept {
  switch (kind) {
    case Kind::kLockFailed:
      return "the lock of its folder cannot be taken";
    case Kind::kForeignLink:
      return "it is a link that is not followed";
    case Kind::kNoFile:
      return "it is no regular file";
    case Kind::kUnreadable:
      return "it cannot be opened for reading";
    case Kind::kReadError:
      return "reading failed behind this line";
    case Kind::kBadHeader:
      return "a header that names no key";
    case Kind::kUnendedValue:
      return "a quoted value that begins here and never ends";
    case Kind::kEmptyValue:
      return "a value without a text, read as empty";
    case Kind::kDroppedLine:
      return "a value line without a name or with an unknown type, dropped";
    case Kind::kNoKey:
      return "a value ahead of the first header, dropped";
    case Kind::kIndentedLine:
      return "an indented line, dropped";
    case Kind::kOutOfReach:
      return "a value of a key right below the root, which no program can read";
    case Kind::kNotSavable:
      return "a key or a value that no save can write";
  }
  return "an unknown fault";
}

StoreReport checkStoreFile(const std::string& pathname) {
  StoreReport report;
  Kind step = Kind::kForeignLink;
  // What is thrown tells by the step in which that happened what is wrong.
  try {
    const std::string located = locateStore(pathname);
    step = Kind::kLockFailed;
    const StoreHold hold(located);
    checkHeldFile(located, report);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    report.fault = StoreFault{step, 0, failure.what()};
  }
  return report;
}

}  // namespace LTLib
