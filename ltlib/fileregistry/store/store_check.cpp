// The check is a visitor of the reader that loads, so that the two cannot come to different verdicts;
// whether a save could write what was read it asks of the rule that saves ask.
#include "ltlib/fileregistry/store/store_check.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/fileregistry/store/store_swap.h"
#include "ltlib/fileregistry/text/file_form.h"
#include "ltlib/fileregistry/text/line_source.h"
#include "ltlib/fileregistry/text/text_reader.h"
#include "ltlib/fileregistry/text/text_writer.h"
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

// The enumerators have room for fewer bytes than this, and end at a name that does not fit.
constexpr std::size_t kLongName = 200;

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t\r\v\f") == std::string_view::npos;
}

// The lines of a file, handed out one by one so that those which were taken last are known as they
// stand there, with all that the reader cuts off.
class KeptLines final : public LineSource {
 public:
  KeptLines(Platform::File& file, TextStore& store)
      : LineSource(store, LineEnds::kAsTheFirst), m_file(file) {}

  /// The lines since the last call of forget, line feeds between them.
  [[nodiscard]] std::string kept() const {
    std::string lines = m_kept;
    for (std::size_t end = 0; m_pairs && (end = lines.find("\r\n", end)) != std::string::npos;
         ++end) {
      lines.erase(end, 1);
    }
    lines.resize(lines.size() - (lines.ends_with('\n') ? 1 : 0));
    return lines;
  }
  /// Whether that is one line as the reader has it, with nothing cut off.
  [[nodiscard]] bool isWhole(std::string_view line) const {
    return m_kept.size() == line.size() + (m_kept.ends_with('\n') ? 1 : 0);
  }
  void forget() { m_kept.clear(); }

 protected:
  std::size_t read(char* to, std::size_t room) override {
    if (m_rest.empty()) {
      std::size_t taken = 0;
      if (Platform::fileCalls().read(m_file, m_piece.data(), m_piece.size(), &taken) !=
          FileResult::kDone) {
        throw QSException("kFileRegistry", __LINE__, kFailure, "registry file cannot be read");
      }
      m_rest = std::string_view(m_piece).substr(0, taken);
    }
    const std::size_t end = m_rest.find('\n');
    const std::string_view part =
        m_rest.substr(0, std::min(end != std::string_view::npos ? end + 1 : end, room));
    part.copy(to, part.size());
    m_kept += part;
    m_rest.remove_prefix(part.size());
    m_pairs = m_pairs || (count() == 0 && m_kept.ends_with("\r\n"));
    return part.size();
  }

 private:
  Platform::File& m_file;
  std::string m_piece = std::string(65536, '\0');
  std::string_view m_rest;
  std::string m_kept;  // with the ends of lines
  bool m_pairs = false;
};

// A value without the line ends that its text goes on over, as a save writes it.
std::string joined(std::string lines) {
  for (std::size_t end = lines.find("\\\n"); end != std::string::npos;
       end = lines.find("\\\n", end)) {
    lines.erase(end, 2);
  }
  return lines;
}

bool isQuoted(QSCfgTypeCode code) {
  return code == kCfgString || code == kCfgDir;
}

// Keeps the places of headers and values where a load keeps the values.
class Check final : private LineVisitor {
 public:
  Check(Platform::File& file, StoreReport& report, StoreReportSize size)
      : m_lines(file, m_texts), m_report(report), m_size(size) {}

  void run();

 private:
  struct Header {
    std::size_t line;
    std::string_view text;
  };

  bool takeHeader(std::string_view line) override;
  bool takeValue(std::string_view line) override;
  void passOver(std::string_view line) override;
  void begin() { m_begin = m_lines.count(); }
  void judgeHeader(std::string_view line);
  void judgeField(QSCfgDataField field);
  void judgeForm(const std::string& written);
  [[nodiscard]] bool isAsWritten(std::string_view line, const QSCfgDataField& field) const;
  void warnOfEmptyKeys();
  void warn(Kind kind, bool lost) { warn({kind, m_begin, m_lines.kept(), lost}); }
  void warn(StoreFault warning);
  [[nodiscard]] std::string shown(std::string text) const;
  bool stop(Kind kind) {
    m_report.fault = StoreFault{kind, m_begin, shown(m_lines.kept())};
    return false;
  }
  void keepTopKeys();

  TextStore m_texts;
  KeptLines m_lines;
  StoreReport& m_report;
  StoreReportSize m_size;
  std::uint16_t m_shortCount = 0;  // the reader's own, which a large file runs past
  bool m_reported = false;         // whether the reader had something to say of the present value
  ReadContext m_context{m_lines, m_shortCount, [this](const char*) { m_reported = true; }};
  QSCfgTree m_tree{""};                   // as a load makes it, but for second values of a name
  std::size_t m_begin = 0;                // the line on which the present header or value begins
  std::vector<std::string_view> m_names;  // of the present header
  QSCfgDataSection* m_section = nullptr;  // null ahead of the first one
  std::optional<StoreFault> m_unsavableHeader;  // of the present key, not told yet
  std::unordered_map<const QSCfgDataSection*, Header> m_headers;  // the first of each key
};

void Check::run() {
  try {
    (void)cfgVisitLines(m_context, *this);
  } catch (const QSException&) {
    begin();
    m_lines.forget();
    stop(Kind::kReadError);
  }
  m_report.lineCount = m_lines.count();
  keepTopKeys();
  if (m_report.loads()) {
    warnOfEmptyKeys();
  }
}

bool Check::takeHeader(std::string_view line) {
  begin();
  m_names.clear();
  if (!splitHeader(line, [&](std::string_view name) { m_names.push_back(name); })) {
    return stop(Kind::kBadHeader);
  }
  m_section = &m_tree.top();
  for (const std::string_view name : m_names) {
    m_section = &m_tree.findOrAddSection(*m_section, name);
    if (name.size() >= kLongName) {
      warn(Kind::kLongName, false);
    }
  }
  m_unsavableHeader.reset();
  if (!headerComesBack(m_names)) {
    m_unsavableHeader = StoreFault{Kind::kNotSavable, m_begin, m_lines.kept(), false};
  }
  judgeHeader(line);
  m_lines.forget();
  return true;
}

void Check::judgeHeader(std::string_view line) {
  std::size_t size = 1;
  for (const std::string_view name : m_names) {
    size += name.size() + 1;
  }
  // The names come from the line, so that one of their size holds nothing else.
  if (size != line.size() || !m_lines.isWhole(line)) {
    std::string written = "[";
    for (const std::string_view name : m_names) {
      written.append(name) += '\\';
    }
    written.back() = ']';
    judgeForm(written);
  }
  if (!m_headers.try_emplace(m_section, Header{m_begin, line}).second) {
    warn(Kind::kRepeatedKey, true);
  }
}

bool Check::takeValue(std::string_view line) {
  begin();
  m_reported = false;
  QSCfgDataField field;
  try {
    field = cfgParseField(m_context, line);
  } catch (const UnendedValue&) {
    return stop(Kind::kUnendedValue);
  }
  const bool asWritten = isAsWritten(line, field);
  if (m_reported) {
    warn(Kind::kEmptyValue, !asWritten);
  }
  if (field == nullptr) {
    warn(Kind::kDroppedLine, true);
  } else if (m_section == nullptr) {
    warn(Kind::kNoKey, true);
  } else {
    if (!m_reported && !asWritten) {
      const std::string written = cfgFieldLine(field.name(), field.type(), field.getValue());
      judgeForm(written.substr(0, written.size() - 1));
    }
    judgeField(std::move(field));
  }
  m_lines.forget();
  return true;
}

// Whether a save writes just these lines. One that stands in its line as it would be written needs no
// comparison with what a save writes, which takes longer than all the rest.
bool Check::isAsWritten(std::string_view line, const QSCfgDataField& field) const {
  if (field == nullptr) {
    return false;
  }
  if (field.form() == QSCfgDataField::Form::kInLine && m_lines.isWhole(line) &&
      line.size() == field.line().size() + (isQuoted(field.type()) ? 1 : 0)) {
    return true;
  }
  return joined(m_lines.kept()) + '\n' ==
         cfgFieldLine(field.name(), field.type(), field.getValue());
}

void Check::passOver(std::string_view /*line*/) {
  if (!isBlank(m_lines.kept())) {
    begin();
    warn(looksIndented(m_lines.kept()) ? Kind::kIndentedLine : Kind::kComment, true);
  }
  m_lines.forget();
}

// Whether a save writes the present lines as they are, and if not, what becomes of them.
void Check::judgeForm(const std::string& written) {
  if (const std::string lines = joined(m_lines.kept()); lines != written) {
    warn(lines.starts_with(written) ? Kind::kTextBehind : Kind::kOtherForm, true);
  }
}

void Check::judgeField(QSCfgDataField field) {
  ++m_report.valueCount;
  // A key without values has no header in a file that is saved.
  if (m_unsavableHeader) {
    warn(*std::exchange(m_unsavableHeader, std::nullopt));
  }
  if (m_names.size() == 1) {
    warn(Kind::kOutOfReach, false);
  }
  if (field.form() == QSCfgDataField::Form::kLacks) {
    warn(Kind::kNotSavable, false);
  }
  if (field.name().size() >= kLongName) {
    warn(Kind::kLongName, false);
  }
  if (m_section->fields().find(field.name()) != FieldList::kNowhere) {
    warn(Kind::kRepeatedName, false);
  } else {
    m_section->fields().append(std::move(field));
  }
}

// A key stands in a file by its own values or by those below it.
void Check::warnOfEmptyKeys() {
  std::unordered_set<const QSCfgDataSection*> holding;
  for (const auto& [section, header] : m_headers) {
    for (const QSCfgDataSection* at = section->fields().size() != 0 ? section : nullptr;
         at != nullptr && holding.insert(at).second; at = at->parent()) {
    }
  }
  for (const auto& [section, header] : m_headers) {
    if (!holding.contains(section)) {
      warn({Kind::kEmptyKey, header.line, std::string(header.text), true});
    }
  }
  std::stable_sort(
      m_report.warnings.begin(), m_report.warnings.end(),
      [](const StoreFault& one, const StoreFault& other) { return one.line < other.line; });
}

std::string Check::shown(std::string text) const {
  if (m_size == StoreReportSize::kBrief) {
    text.resize(std::min({text.size(), text.find('\n'), kStoreFaultText}));
  }
  return text;
}

void Check::warn(StoreFault warning) {
  m_report.lostCount += warning.lost ? 1 : 0;
  if (m_report.warningCount++ < kMostStoreWarnings || m_size == StoreReportSize::kFull) {
    warning.text = shown(std::move(warning.text));
    m_report.warnings.push_back(std::move(warning));
  }
}

void Check::keepTopKeys() {
  for (std::size_t i = 0; i < m_tree.top().sectionCount(); ++i) {
    const QSCfgDataSection& section = m_tree.top().sectionAt(i);
    StoreTopKey& top = m_report.topKeys.emplace_back();
    top.name = section.name();
    for (std::size_t k = 0; k < section.sectionCount(); ++k) {
      top.subKeys.emplace_back(section.sectionAt(k).name());
    }
  }
}

// The status is asked before the file is opened, since the opening of what is no file fails with
// words that do not say so.
void checkHeldFile(const std::string& pathname, StoreReportSize size, StoreReport& report) {
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
  Check(*file, report, size).run();
}

}  // namespace

const char* describeStoreFault(StoreFaultKind kind) noexcept {
  switch (kind) {
    case Kind::kLockFailed:
      return "the lock of its folder cannot be taken";
    case Kind::kForeignLink:
      return "it is a link that is not followed";
    case Kind::kNoIdentity:
      return "its folder has no lock";
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
    case Kind::kComment:
      return "a comment, dropped by a save";
    case Kind::kTextBehind:
      return "text behind the end, dropped by a save";
    case Kind::kOtherForm:
      return "a line that a save writes in another form";
    case Kind::kRepeatedKey:
      return "a second header of a key, dropped by a save";
    case Kind::kRepeatedName:
      return "a second value of a name, of which programs read the first";
    case Kind::kEmptyKey:
      return "a key without values, dropped by a save";
    case Kind::kLongName:
      return "a name of 200 bytes or more, at which programs stop to enumerate";
  }
  return "an unknown fault";
}

StoreReport checkStoreFile(const std::string& pathname) {
  return checkStoreFile(pathname, StoreReportSize::kBrief);
}

StoreReport checkStoreFile(const std::string& pathname, StoreReportSize size) {
  StoreReport report;
  Kind step = Kind::kForeignLink;
  // What is thrown tells by the step in which that happened what is wrong.
  try {
    const std::string located = locateStore(pathname);
    step = Kind::kLockFailed;
    const StoreHold hold(located);
    checkHeldFile(located, size, report);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::length_error& failure) {
    report.fault = StoreFault{Kind::kNoIdentity, 0, failure.what()};
  } catch (const std::exception& failure) {
    report.fault = StoreFault{step, 0, failure.what()};
  }
  return report;
}

}  // namespace LTLib
