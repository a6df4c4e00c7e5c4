// This process's number and the machine's monotonic clock.
#ifndef LTLIB_PLATFORM_PROCESS_H
#define LTLIB_PLATFORM_PROCESS_H

#include <cstdint>

namespace LTLib::Platform {

/// The identifier of the calling process, also right in a forked child.
[[nodiscard]] std::uint32_t processId() noexcept;

/// A clock that never goes back: ticks since some fixed moment, and ticks in a second.
struct MonotonicTime {
  std::uint64_t ticks = 0;
  std::uint64_t ticksPerSecond = 1;
};

[[nodiscard]] MonotonicTime monotonicTime() noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_PROCESS_H
