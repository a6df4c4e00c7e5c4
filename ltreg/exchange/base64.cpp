#include "ltreg/exchange/base64.h"

#include <cstdint>

namespace ltreg {
namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string base64Of(std::string_view bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::string_view group = bytes.substr(i, 3);
    std::uint32_t bits = 0;
    for (std::size_t at = 0; at < 3; ++at) {
      bits = bits << 8 | (at < group.size() ? static_cast<unsigned char>(group[at]) : 0U);
    }
    for (std::size_t at = 0; at < 4; ++at) {
      text += at <= group.size() ? kDigits[bits >> (18 - 6 * at) & 0x3F] : '=';
    }
  }
  return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
  if (text.size() % 4 != 0) {
    return std::nullopt;
  }
  const std::size_t fill = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  std::string bytes;
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::size_t digit = i < text.size() - fill ? kDigits.find(text[i]) : 0;
    if (digit == std::string_view::npos) {
      return std::nullopt;
    }
    bits = bits << 6 | static_cast<std::uint32_t>(digit);
    if (i % 4 == 3) {
      for (int shift = 16; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(bits >> shift & 0xFF);
      }
    }
  }
  bytes.resize(bytes.size() - fill);
  return bytes;
}

}  // namespace ltreg
