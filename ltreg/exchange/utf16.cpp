#include "ltreg/exchange/utf16.h"

namespace ltreg {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kFirstHigh = 0xD800;
constexpr char32_t kFirstLow = 0xDC00;
constexpr char32_t kBehindSurrogates = 0xE000;
constexpr char32_t kFirstPair = 0x10000;
constexpr char32_t kLast = 0x10FFFF;

unsigned int octetAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

// Takes one character off the front of a text that is not empty; none where it begins with none.
std::optional<char32_t> takeUtf8(std::string_view& text) {
  const unsigned int first = octetAt(text, 0);
  const std::size_t size = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, kFirstPair};  // below it the form is too long
  if ((first >= 0x80 && first < 0xC0) || text.size() < size) {
    return std::nullopt;
  }
  char32_t code = size == 1 ? first : first & (0x7Fu >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((octetAt(text, i) & 0xC0) != 0x80) {
      return std::nullopt;
    }
    code = code << 6 | (octetAt(text, i) & 0x3F);
  }
  text.remove_prefix(size);
  const bool isSurrogate = code >= kFirstHigh && code < kBehindSurrogates;
  return code < kLeast[size] || code > kLast || isSurrogate ? std::nullopt : std::optional(code);
}

void appendUnit(std::string& out, char32_t unit) {
  out += static_cast<char>(unit & 0xFF);
  out += static_cast<char>(unit >> 8);
}

void appendUtf8(std::string& out, char32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
    return;
  }
  const int rest = code < 0x800 ? 1 : code < kFirstPair ? 2 : 3;
  out += static_cast<char>((0xFF00u >> (rest + 1) & 0xFFu) | code >> (6 * rest));
  for (int i = rest - 1; i >= 0; --i) {
    out += static_cast<char>(0x80 | (code >> (6 * i) & 0x3F));
  }
}

}  // namespace

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    if (!takeUtf8(text)) {
      return false;
    }
  }
  return true;
}

std::optional<std::string> utf16Of(std::string_view utf8) {
  std::string out;
  out.reserve(2 * utf8.size());
  while (!utf8.empty()) {
    const std::optional<char32_t> code = takeUtf8(utf8);
    if (!code) {
      return std::nullopt;
    }
    if (*code < kFirstPair) {
      appendUnit(out, *code);
    } else {
      appendUnit(out, kFirstHigh + ((*code - kFirstPair) >> 10));
      appendUnit(out, kFirstLow + ((*code - kFirstPair) & 0x3FF));
    }
  }
  return out;
}

std::string utf8Of(std::string_view utf16, bool highByteFirst) {
  const auto unitAt = [&](std::size_t at) -> char32_t {
    const unsigned int one = octetAt(utf16, at);
    const unsigned int two = octetAt(utf16, at + 1);
    return highByteFirst ? one << 8 | two : two << 8 | one;
  };
  std::string out;
  out.reserve(utf16.size() / 2);
  std::size_t at = 0;
  for (; at + 1 < utf16.size(); at += 2) {
    const char32_t unit = unitAt(at);
    if (unit < kFirstHigh || unit >= kBehindSurrogates) {
      appendUtf8(out, unit);
      continue;
    }
    const char32_t next = unit < kFirstLow && at + 3 < utf16.size() ? unitAt(at + 2) : 0;
    if (next >= kFirstLow && next < kBehindSurrogates) {
      appendUtf8(out, kFirstPair + ((unit - kFirstHigh) << 10) + (next - kFirstLow));
      at += 2;
    } else {
      appendUtf8(out, kReplacement);
    }
  }
  if (at < utf16.size()) {
    appendUtf8(out, kReplacement);
  }
  return out;
}

}  // namespace ltreg
