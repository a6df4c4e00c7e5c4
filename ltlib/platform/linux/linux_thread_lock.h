// The shape of the thread lock, for this side's own use: by value and without an allocation.
#ifndef LTLIB_PLATFORM_LINUX_LINUX_THREAD_LOCK_H
#define LTLIB_PLATFORM_LINUX_LINUX_THREAD_LOCK_H

#include <atomic>
#include <cstdint>

#include "ltlib/platform/thread_lock.h"

namespace LTLib::Platform {

/// Constant-initialised and never in need of disposal, so that it also serves as a static guard.
struct ThreadLock {
  constexpr explicit ThreadLock(unsigned int tries) noexcept : spinCount(tries) {}

  std::atomic<std::uint32_t> state{0};
  std::atomic<const void*> owner{nullptr};
  unsigned int reentries = 0;
  unsigned int spinCount;
};

/// As enterThreadLock, but gives up at once where that would mean to wait.
[[nodiscard]] bool tryEnterThreadLock(ThreadLock& lock) noexcept;

/// Takes the lock if it is free; else sleeps for a millisecond, or less if the lock is given back,
/// and gives false. Requires: the calling thread does not hold it.
[[nodiscard]] bool enterThreadLockOrNap(ThreadLock& lock) noexcept;

/// Whether the calling thread holds the lock.
[[nodiscard]] bool holdsThreadLock(const ThreadLock& lock) noexcept;

/// Makes the lock free, whoever held it. Requires: the process has one thread, as after fork.
void resetThreadLock(ThreadLock& lock) noexcept;

/// Forgets who sleeps for any lock: in the child of a fork, where these threads do not exist.
void forgetSleepers() noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_LINUX_LINUX_THREAD_LOCK_H
