// How long waits for locks of other processes last, and who holds such a lock.
//
// Threads: all may be called from any thread.
#ifndef LTLIB_PLATFORM_LOCK_WAIT_H
#define LTLIB_PLATFORM_LOCK_WAIT_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace LTLib::Platform {

/// From now on each wait of this process for a named lock or the lock on a file fails after that
/// time; without a call there is no limit. Requires: more than nothing, and a day at most.
void limitLockWaits(std::chrono::milliseconds limit) noexcept;

/// The present limit; none where there is none.
[[nodiscard]] std::optional<std::chrono::milliseconds> lockWaitLimit() noexcept;

struct LockHolder {
  std::uint32_t process = 0;
  std::string program;  // its name, where the system tells it
};

/// What the system knows a named lock by: a file's path, or the name itself.
[[nodiscard]] std::string namedLockPlace(const std::string& name);

/// Another process that holds a named lock, or the lock on a file; none where nobody does or the
/// system does not tell. Throw std::bad_alloc alone.
[[nodiscard]] std::optional<LockHolder> holderOfNamedLock(const std::string& name);
[[nodiscard]] std::optional<LockHolder> holderOfFileLock(const std::string& path);

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_LOCK_WAIT_H
