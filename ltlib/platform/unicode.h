// Text between UTF-8, UTF-16 and the system's own code page for narrow text.
//
// Each call converts `size` units, NULs among them, and gives the number of units of the result.
// With a `capacity` of 0 it only measures. A result longer than the capacity gives 0, and as many
// whole characters as fit are in `out`. What is no proper text comes out as U+FFFD; how many of
// them stand for one fault is the system's business. Texts of 2 GiB or more give 0.
#ifndef LTLIB_PLATFORM_UNICODE_H
#define LTLIB_PLATFORM_UNICODE_H

#include <cstddef>

namespace LTLib::Platform {

[[nodiscard]] std::size_t utf8ToUtf16(const char* text, std::size_t size, char16_t* out,
                                      std::size_t capacity) noexcept;

[[nodiscard]] std::size_t utf16ToUtf8(const char16_t* text, std::size_t size, char* out,
                                      std::size_t capacity) noexcept;

/// From the code page of narrow names and paths; UTF-8 where the system knows no other.
[[nodiscard]] std::size_t codePageToUtf16(const char* text, std::size_t size, char16_t* out,
                                          std::size_t capacity) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_UNICODE_H
