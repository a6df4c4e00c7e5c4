// The text form that the tools of Windows write and read: version 5, and 4 with narrow text.
//
// A header names a key, a '-' in front of the name deletes it; a line below it sets a value, deletes
// it by '-', or goes on in the next line where its hexadecimal digits end with a backslash. What
// begins with ';' is a comment.
#ifndef LTREG_EXCHANGE_REG_TEXT_H
#define LTREG_EXCHANGE_REG_TEXT_H

#include <string>

#include "ltreg/exchange/document.h"

namespace ltreg {

/// Reads UTF-8 or, with a byte order mark, UTF-16. `file` is for messages. Throws Failure with the
/// line at the first that makes no sense.
[[nodiscard]] Document readRegText(std::string text, const std::string& file);

/// In UTF-8, lines ending in CR LF. Texts that are no UTF-8 are written byte by byte.
[[nodiscard]] std::string writeRegText(const Document& document);

/// Whether the first line is that of this form.
[[nodiscard]] bool looksLikeRegText(std::string_view text);

}  // namespace ltreg

#endif  // LTREG_EXCHANGE_REG_TEXT_H
