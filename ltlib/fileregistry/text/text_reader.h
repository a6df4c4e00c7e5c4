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

/// Writes a syntax message to standard output.
void printSyntaxMessage(const char* text);

/// Replaces `line` by the next line of the source. A line is taken in pieces of 8191 bytes, and a
/// NUL cuts off the rest of its piece. False at the end of the text.
bool cfgReadLine(LineSource& source, std::string& line);

/// Reads all lines into the tree below `root`. Throws QSException "Registry file parsing error" on
/// a text that never ends; what was read until then stays in the tree.
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
