// Texts as a terminal may see them, and names as the registry compares them.
#ifndef LTREG_CLI_SHOWN_TEXT_H
#define LTREG_CLI_SHOWN_TEXT_H

#include <string>
#include <string_view>

namespace ltreg {

/// Two hexadecimal digits for each byte.
[[nodiscard]] std::string hexDigits(std::string_view bytes);

/// The text with each control byte as "\x" and two hexadecimal digits; all else stays.
[[nodiscard]] std::string escapeControls(std::string_view text);

/// The text for a message: in single quotes, escaped, and cut where it is very long.
[[nodiscard]] std::string inQuotes(std::string_view text);

/// The name with the ASCII letters in lower case, by which the registry tells names apart.
[[nodiscard]] std::string foldedName(std::string_view name);

/// Whether two names are equal but for the case of the ASCII letters.
[[nodiscard]] bool sameName(std::string_view one, std::string_view other);

}  // namespace ltreg

#endif  // LTREG_CLI_SHOWN_TEXT_H
