// The SHA-256 digest, which turns a text of any length into a file name nobody can make collide.
#ifndef LTLIB_PLATFORM_LINUX_SHA256_H
#define LTLIB_PLATFORM_LINUX_SHA256_H

#include <array>
#include <cstdint>
#include <string_view>

namespace LTLib::Platform {

[[nodiscard]] std::array<std::uint8_t, 32> sha256(std::string_view text) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_LINUX_SHA256_H
