// From the text of a store file to sections and fields.
//
// The reader looks at the first byte of a line and then searches for delimiters, so that most
// malformed lines are passed over in silence. docs/store-format.md tells the format.
#ifndef LTLIB_FILEREGISTRY_TEXT_TEXT_READER_H
#define LTLIB_FILEREGISTRY_TEXT_TEXT_READER_H

#include <cstdint>
#include <functional>
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

/// Is handed the lines of a text that begin a header or a value, each with the bytes that it has and
/// for as long as the source's store.
/// Where one gives false the reading ends.
class LineVisitor {
 public:
  virtual ~LineVisitor() = default;
  virtual bool takeHeader(std::string_view line) = 0;
  /// May take as many lines more from the source as the value goes on for.
  virtual bool takeValue(std::string_view line) = 0;
  /// A line that is neither, which a load drops.
  virtual void passOver(std::string_view /*line*/) {}
};

/// Writes a syntax message to standard output.
void printSyntaxMessage(const char* text);

/// The next line of the source. A line is taken in pieces of 8191 bytes, and a NUL cuts off the rest
/// of its piece. False at the end of the text.
bool cfgReadLine(LineSource& source, std::string_view& line);

/// Goes through all lines; the one loop by which a file is read and checked. False if the visitor
/// ended it.
bool cfgVisitLines(ReadContext& context, LineVisitor& visitor);

/// Reads all lines into the tree, whose store must be the one that the source reads into. Throws
/// UnendedValue, and what the source throws; what was read until then stays in the tree.
[[nodiscard]] ReadResult cfgReadText(ReadContext& context, QSCfgTree& tree);

/// The field of a value line, with as many lines more as its text goes on for; an empty one if the
/// line has no effect. Name and text stay in the source's store.
QSCfgDataField cfgParseField(ReadContext& context, std::string_view line);

/// The text of a quoted value. `start` is the end of its type word.
std::string_view cfgParseQuoted(ReadContext& context, std::string_view line, std::size_t start);

/// The text of a bare value.
std::string_view cfgParseBare(ReadContext& context, std::string_view line, std::size_t start);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TEXT_TEXT_READER_H
