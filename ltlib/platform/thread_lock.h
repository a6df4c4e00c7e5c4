// A re-entrant lock between the threads of this process.
#ifndef LTLIB_PLATFORM_THREAD_LOCK_H
#define LTLIB_PLATFORM_THREAD_LOCK_H

namespace LTLib::Platform {

/// The lock itself; only the platform's side knows its shape.
struct ThreadLock;

/// Makes a lock whose waiters try `spinCount` times before they block. Null when the system has
/// no memory for it.
[[nodiscard]] ThreadLock* createThreadLock(unsigned int spinCount) noexcept;

/// Takes the lock; the thread that holds it may take it again. False when the system refuses.
[[nodiscard]] bool enterThreadLock(ThreadLock& lock) noexcept;

/// Undoes one enterThreadLock. Requires: the calling thread holds the lock.
void leaveThreadLock(ThreadLock& lock) noexcept;

/// Frees the lock. Requires: nobody holds it or waits for it. A null lock is fine.
void destroyThreadLock(ThreadLock* lock) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_THREAD_LOCK_H
