// From the text of a store file to sections and fields.
//
// The reader looks at the first byte of a line and then searches for delimiters, so that most
// malformed lines are passed over in silence. docs/store-format.md tells the format.
#ifndef LTLIB_FILEREGISTRY_TEXT_TEXT_READER_H
#define LTLIB_FILEREGISTRY_TEXT_TEXT_READER_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "ltlib/fileregistry/text/line_source.h"
#include "ltlib/fileregistry/tree/config_tree.h"
#include "ltlib/foundation/kqsresult.h"

namespace LTLib::detail {

/// Receives the text of a syntax message.
using SyntaxReport = std::function<void(const char* text)>;

/// What one reading goes by: where the lines come from, the count of lines that it carries on, and
/// where its messages go.
struct ReadContext {
  LineSource& source;
  std::uint16_t& lineCount;
  SyntaxReport report;
};

enum class ReadResult : int {
  kWhole = 0,
  kBadHeader = 3,  // a header led to no section; what follows it was not read
};

/// A quoted value that neither ends nor goes on: "Registry file parsing error".
class UnendedValue final : public QSException {
 public:
  UnendedValue();
};

/// Is handed the lines of a text that begin a header or a value, each with the bytes that it has.
/// Where one gives false the reading ends.
class LineVisitor {
 public:
  virtual ~LineVisitor() = default;
  virtual bool takeHeader(const std::string& line) = 0;
  /// May take as many lines more from the source as the value goes on for.
  virtual bool takeValue(const std::string& line) = 0;
  /// A line that is neither, which a load drops.
  virtual void passOver(const std::string& /*line*/) {}
};

/// Writes a syntax message to standard output.
void printSyntaxMessage(const char* text);

/// Replaces `line` by the next line of the source. A line is taken in pieces of 8191 bytes, and a
/// NUL cuts off the rest of its piece. False at the end of the text.
bool cfgReadLine(LineSource& source, std::string& line);

/// Goes through all lines; the one loop by which a file is read and checked. False if the visitor
/// ended it.
bool cfgVisitLines(ReadContext& context, LineVisitor& visitor);

/// Reads all lines into the tree below `root`. Throws UnendedValue; what was read until then stays
/// in the tree.
[[nodiscard]] ReadResult cfgReadText(ReadContext& context, QSCfgDataSection& root);

/// The section that a header line names, added with its parents where missing; null if the line
/// names none.
QSCfgDataSection* cfgParseHeader(std::string_view line, QSCfgDataSection& root);

/// The field of a value line, with as many lines more as its text goes on for; null if the line
/// has no effect.
std::unique_ptr<QSCfgDataFieldString> cfgParseField(ReadContext& context, const std::string& line);

/// The text of a quoted value. `start` is where the searches for the type word begin.
std::string cfgParseQuoted(ReadContext& context, const std::string& line, std::size_t start,
                           std::string_view typeWord);

/// The text of a bare value.
std::string cfgParseBare(ReadContext& context, const std::string& line, std::size_t start,
                         std::string_view typeWord);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TEXT_TEXT_READER_H
