// This process's number and environment, and the machine's monotonic clock.
#ifndef LTLIB_PLATFORM_PROCESS_H
#define LTLIB_PLATFORM_PROCESS_H

#include <cstdint>

namespace LTLib::Platform {

/// The identifier of the calling process, also right in a forked child.
[[nodiscard]] std::uint32_t processId() noexcept;

/// The value of an environment variable; null where it is not set, and in a process that has more
/// rights than the one who started it and chose the environment.
[[nodiscard]] const char* trustedEnvironment(const char* name) noexcept;

/// A clock that never goes back: ticks since some fixed moment, and ticks in a second.
struct MonotonicTime {
  std::uint64_t ticks = 0;
  std::uint64_t ticksPerSecond = 1;
};

[[nodiscard]] MonotonicTime monotonicTime() noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_PROCESS_H
