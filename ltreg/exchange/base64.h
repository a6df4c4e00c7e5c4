// Bytes in letters and digits, as RFC 4648 has them.
#ifndef LTREG_EXCHANGE_BASE64_H
#define LTREG_EXCHANGE_BASE64_H

#include <optional>
#include <string>
#include <string_view>

namespace ltreg {

[[nodiscard]] std::string base64Of(std::string_view bytes);

/// None for a text that is no base64.
[[nodiscard]] std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace ltreg

#endif  // LTREG_EXCHANGE_BASE64_H
