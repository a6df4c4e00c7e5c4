// No flag that refuses faulty text is set, so that the system itself puts U+FFFD in its place.
#include "ltlib/platform/unicode.h"

#include <windows.h>

#include <algorithm>
#include <limits>

namespace LTLib::Platform {
namespace {

constexpr std::size_t kLongest = std::numeric_limits<int>::max();

std::size_t widen(UINT codePage, const char* text, std::size_t size, char16_t* out,
                  std::size_t capacity) noexcept {
  if (size > kLongest) {
    return 0;
  }
  return static_cast<std::size_t>(MultiByteToWideChar(
      codePage, 0, text, static_cast<int>(size), reinterpret_cast<wchar_t*>(out),
      static_cast<int>(std::min(capacity, kLongest))));
}

}  // namespace

std::size_t utf8ToUtf16(const char* text, std::size_t size, char16_t* out,
                        std::size_t capacity) noexcept {
  return widen(CP_UTF8, text, size, out, capacity);
}

std::size_t codePageToUtf16(const char* text, std::size_t size, char16_t* out,
                            std::size_t capacity) noexcept {
  return widen(CP_ACP, text, size, out, capacity);
}

std::size_t utf16ToUtf8(const char16_t* text, std::size_t size, char* out,
                        std::size_t capacity) noexcept {
  if (size > kLongest) {
    return 0;
  }
  return static_cast<std::size_t>(WideCharToMultiByte(
      CP_UTF8, 0, reinterpret_cast<const wchar_t*>(text), static_cast<int>(size), out,
      static_cast<int>(std::min(capacity, kLongest)), nullptr, nullptr));
}

}  // namespace LTLib::Platform
