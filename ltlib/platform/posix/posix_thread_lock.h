// The shape of the thread lock, for this side's own use: by value and without an allocation.
#ifndef LTLIB_PLATFORM_POSIX_POSIX_THREAD_LOCK_H
#define LTLIB_PLATFORM_POSIX_POSIX_THREAD_LOCK_H

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

/// Whether the calling thread holds the lock.
[[nodiscard]] bool holdsThreadLock(const ThreadLock& lock) noexcept;

/// Makes the lock free, whoever held it. Requires: the process has one thread, as after fork.
void resetThreadLock(ThreadLock& lock) noexcept;

/// Holds a thread lock for a scope.
class ThreadLockScope {
 public:
  explicit ThreadLockScope(ThreadLock& lock) noexcept : m_lock(lock) {
    static_cast<void>(enterThreadLock(lock));
  }
  ~ThreadLockScope() { leaveThreadLock(m_lock); }
  ThreadLockScope(const ThreadLockScope&) = delete;
  ThreadLockScope& operator=(const ThreadLockScope&) = delete;

 private:
  ThreadLock& m_lock;
};

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_POSIX_POSIX_THREAD_LOCK_H
