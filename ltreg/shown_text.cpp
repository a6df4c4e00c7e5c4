#include "ltreg/shown_text.h"

#include <algorithm>

namespace ltreg {
namespace {

constexpr std::size_t kMostQuoted = 200;

char lowered(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

}  // namespace

std::string escapeControls(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string shown;
  shown.reserve(text.size());
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x20 || code == 0x7F) {
      shown.append("\\x") += kDigits[code >> 4];
      shown += kDigits[code & 0xF];
    } else {
      shown += byte;
    }
  }
  return shown;
}

std::string inQuotes(std::string_view text) {
  const bool cut = text.size() > kMostQuoted;
  return '\'' + escapeControls(text.substr(0, kMostQuoted)) + (cut ? "...'" : "'");
}

bool sameName(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return lowered(a) == lowered(b); });
}

}  // namespace ltreg
