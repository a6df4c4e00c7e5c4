// Texts as a terminal may see them, and names as the registry compares them.
#ifndef LTREG_CLI_SHOWN_TEXT_H
#define LTREG_CLI_SHOWN_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ltreg {

/// Two hexadecimal digits for each byte.
[[nodiscard]] std::string hexDigits(std::string_view bytes);

/// The text with each control byte as "\x" and two hexadecimal digits; all else stays.
[[nodiscard]] std::string escapeControls(std::string_view text);

/// The text for a message: in single quotes, escaped, and cut where it is very long.
[[nodiscard]] std::string inQuotes(std::string_view text);

/// A count with what it counts, which takes an "s" unless there is one.
[[nodiscard]] std::string countOf(std::size_t count, const char* what);

/// A result code as "0x" and eight digits.
[[nodiscard]] std::string inHexadecimal(std::int32_t result);

/// A list on one line as people read it.
[[nodiscard]] std::string commasForTabs(std::string_view text);

/// The columns that the text takes on a screen, for characters of one column each; and the blanks
/// that bring it to a width.
[[nodiscard]] std::size_t widthOf(std::string_view text);
[[nodiscard]] std::string blanksBehind(std::string_view text, std::size_t width);

/// The candidate that the word was most likely meant to be, whatever the letter case; null if none is
/// near.
[[nodiscard]] const std::string* nearestTo(std::string_view word,
                                           const std::vector<std::string>& candidates);

/// "; did you mean ...?" for that candidate behind a prefix, or nothing.
[[nodiscard]] std::string didYouMean(std::string_view word,
                                     const std::vector<std::string>& candidates,
                                     const std::string& prefix = {});

/// The name with the ASCII letters in lower case, by which the registry tells names apart.
[[nodiscard]] std::string foldedName(std::string_view name);

/// Whether two names are equal but for the case of the ASCII letters.
[[nodiscard]] bool sameName(std::string_view one, std::string_view other);

}  // namespace ltreg

#endif  // LTREG_CLI_SHOWN_TEXT_H
