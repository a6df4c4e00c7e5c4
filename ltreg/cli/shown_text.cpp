#include "ltreg/cli/shown_text.h"

#include <algorithm>

namespace ltreg {
namespace {

// A name can be as long as a file; a message has to fit a screen.
constexpr std::size_t kMostQuoted = 200;

// The registry folds these letters alone; the C library would ask the locale.
char lowered(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

bool isControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return code < 0x20 || code == 0x7F;
}

}  // namespace

std::string hexDigits(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string digits;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    digits += kDigits[code >> 4];
    digits += kDigits[code & 0xF];
  }
  return digits;
}

std::string escapeControls(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const auto* control = std::find_if(text.begin(), text.end(), isControl);
    const auto plain = static_cast<std::size_t>(control - text.begin());
    shown.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (!text.empty()) {
      shown.append("\\x").append(hexDigits(text.substr(0, 1)));
      text.remove_prefix(1);
    }
  }
  return shown;
}

std::string inQuotes(std::string_view text) {
  const bool cut = text.size() > kMostQuoted;
  return '\'' + escapeControls(text.substr(0, kMostQuoted)) + (cut ? "...'" : "'");
}

std::string foldedName(std::string_view name) {
  std::string folded(name);
  std::transform(folded.begin(), folded.end(), folded.begin(), lowered);
  return folded;
}

bool sameName(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return lowered(a) == lowered(b); });
}

}  // namespace ltreg
