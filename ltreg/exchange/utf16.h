// Text between UTF-8 and UTF-16 of either byte order, for files.
#ifndef LTREG_EXCHANGE_UTF16_H
#define LTREG_EXCHANGE_UTF16_H

#include <optional>
#include <string>
#include <string_view>

namespace ltreg {

[[nodiscard]] bool isUtf8(std::string_view text);

/// The low byte of each unit first. None where the text is no UTF-8.
[[nodiscard]] std::optional<std::string> utf16Of(std::string_view utf8);

/// What is no proper text, a byte left over included, becomes U+FFFD.
[[nodiscard]] std::string utf8Of(std::string_view utf16, bool highByteFirst = false);

}  // namespace ltreg

#endif  // LTREG_EXCHANGE_UTF16_H
