#include "ltlib/platform/unicode.h"

#include <limits>

namespace LTLib::Platform {
namespace {

constexpr std::size_t kLongest = std::numeric_limits<int>::max();
constexpr char32_t kReplacement = 0xFFFD;

/// One character of a text and the units that it takes there.
struct Character {
  char32_t code = kReplacement;
  std::size_t units = 1;
};

bool isIn(unsigned char byte, unsigned int low, unsigned int high) {
  return byte >= low && byte <= high;
}

// A fault takes as many bytes as could have begun a character.
Character takeUtf8(const char* text, std::size_t size) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byteAt(0);
  if (lead < 0x80) {
    return {lead, 1};
  }
  // C0 and C1 could only begin long forms, F5 and above only what lies beyond the last plane.
  const std::size_t length = isIn(lead, 0xC2, 0xDF)   ? 2
                             : isIn(lead, 0xE0, 0xEF) ? 3
                             : isIn(lead, 0xF0, 0xF4) ? 4
                                                      : 1;
  // The second byte alone rules out long forms, surrogates and what lies beyond the last plane.
  const unsigned int low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned int high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  char32_t code = lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if (i >= size || !isIn(byteAt(i), i == 1 ? low : 0x80, i == 1 ? high : 0xBF)) {
      return {kReplacement, i};
    }
    code = (code << 6) | (byteAt(i) & 0x3Fu);
  }
  return length == 1 ? Character{} : Character{code, length};
}

Character takeUtf16(const char16_t* text, std::size_t size) {
  const char32_t first = text[0];
  if (first < 0xD800 || first > 0xDFFF) {
    return {first, 1};
  }
  const bool paired = first < 0xDC00 && size > 1 && text[1] >= 0xDC00 && text[1] <= 0xDFFF;
  return paired ? Character{0x10000 + ((first - 0xD800) << 10) + (text[1] - 0xDC00u), 2}
                : Character{};
}

std::size_t put(char32_t code, char16_t* out) {
  if (code < 0x10000) {
    out[0] = static_cast<char16_t>(code);
    return 1;
  }
  out[0] = static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
  out[1] = static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
  return 2;
}

std::size_t put(char32_t code, char* out) {
  if (code < 0x80) {
    out[0] = static_cast<char>(code);
    return 1;
  }
  const std::size_t length = code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
  for (std::size_t i = length - 1; i > 0; --i) {
    out[i] = static_cast<char>(0x80 | (code & 0x3F));
    code >>= 6;
  }
  out[0] = static_cast<char>((0xF00u >> length) | code);
  return length;
}

template <class In, class Out>
std::size_t convert(Character (*take)(const In*, std::size_t), const In* text, std::size_t size,
                    Out* out, std::size_t capacity) noexcept {
  if (size > kLongest) {
    return 0;
  }
  std::size_t count = 0;
  for (std::size_t at = 0; at < size;) {
    const Character character = take(text + at, size - at);
    // Put aside first: a character that does not fit whole is left out whole.
    Out units[4];
    const std::size_t length = put(character.code, units);
    if (capacity != 0) {
      if (count + length > capacity) {
        return 0;
      }
      for (std::size_t i = 0; i < length; ++i) {
        out[count + i] = units[i];
      }
    }
    count += length;
    at += character.units;
  }
  return count;
}

}  // namespace

std::size_t utf8ToUtf16(const char* text, std::size_t size, char16_t* out,
                        std::size_t capacity) noexcept {
  return convert(takeUtf8, text, size, out, capacity);
}

std::size_t utf16ToUtf8(const char16_t* text, std::size_t size, char* out,
                        std::size_t capacity) noexcept {
  return convert(takeUtf16, text, size, out, capacity);
}

std::size_t codePageToUtf16(const char* text, std::size_t size, char16_t* out,
                            std::size_t capacity) noexcept {
  return utf8ToUtf16(text, size, out, capacity);
}

}  // namespace LTLib::Platform
