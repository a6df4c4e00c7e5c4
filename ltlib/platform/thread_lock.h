// A re-entrant lock between the threads of this process.
#ifndef LTLIB_PLATFORM_THREAD_LOCK_H
#define LTLIB_PLATFORM_THREAD_LOCK_H

namespace LTLib::Platform {

/// The lock itself; only the platform's side knows its shape.
struct ThreadLock;

/// How often the library's own waiters try before they block.
inline constexpr unsigned int kSpinCount = 4000;

/// Makes a lock whose waiters try `spinCount` times before they block, and with one processor not
/// at all. Null when the system has no memory for it.
[[nodiscard]] ThreadLock* createThreadLock(unsigned int spinCount) noexcept;

/// Takes the lock; the thread that holds it may take it again. False when the system refuses.
[[nodiscard]] bool enterThreadLock(ThreadLock& lock) noexcept;

/// Undoes one enterThreadLock. Requires: the calling thread holds the lock.
void leaveThreadLock(ThreadLock& lock) noexcept;

/// Frees the lock. Requires: nobody holds it or waits for it. A null lock is fine.
void destroyThreadLock(ThreadLock* lock) noexcept;

/// What tells the calling thread from all others that live; the same in the child of its fork.
[[nodiscard]] const void* currentThread() noexcept;

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

#endif  // LTLIB_PLATFORM_THREAD_LOCK_H
