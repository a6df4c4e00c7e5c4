/// \file
/// \brief A re-entrant lock between the threads of one process, and its scope guard.
///
/// Threads: lock and unlock may be called from any thread; the thread that holds the lock may take
/// it again, and it is free after as many unlocks as locks. Waits have no time limit: a waiter
/// tries 4000 times before it blocks, and where the process has one processor it blocks at once.
///
/// | state           | lock by the owner | lock by another | unlock by the owner          |
/// |-----------------|-------------------|-----------------|------------------------------|
/// | free            |                   | held, depth 1   |                              |
/// | held, depth n   | depth n + 1       | waits           | depth n - 1; free at depth 0 |
///
/// Forks: the child has the lock as it stood. What the forking thread held it holds there too; what
/// another thread held nobody gives back there, so that a program takes the lock around the fork or
/// leaves it alone in the child.
///
/// Failure: QSException with 0x80004005 and no file or line.
#ifndef LTLIB_FOUNDATION_MUTEX_H
#define LTLIB_FOUNDATION_MUTEX_H

#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"

namespace LTLib {

namespace Platform {
struct ThreadLock;
}

namespace detail {
class ProcessMutex;
}

/// The lock; the table above tells its states.
class LTLIB_EXPORT Mutex {
 public:
  /// Throws std::bad_alloc when the system has no memory for the lock.
  Mutex();

  /// Requires: nobody holds the lock or waits for it.
  ~Mutex();

  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  /// Takes the lock. Throws QSException "cannot lock LTLib::Mutex" when the system refuses.
  void lock();

  /// Undoes one lock. Requires: the calling thread holds the lock.
  void unlock();

 private:
  friend class detail::ProcessMutex;
  explicit Mutex(Platform::ThreadLock* lock) noexcept : m_lock(lock) {}

  Platform::ThreadLock* m_lock;
};

/// Holds a Mutex from construction to destruction; for this library's own code.
class ScopedLock {
 public:
  explicit ScopedLock(Mutex& mutex) : m_mutex(&mutex) { mutex.lock(); }

  // A destructor lets nothing out, so that a release that fails ends the process.
  ~ScopedLock() {
    try {
      m_mutex->unlock();
    } catch (...) {
      reportFailedRelease();
    }
  }

  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;

 private:
  [[noreturn]] static void reportFailedRelease() {
    throw QSException(kFailure, "cannot delete LTLib::ScopedLock");
  }

  Mutex* m_mutex;
};

}  // namespace LTLib

#endif  // LTLIB_FOUNDATION_MUTEX_H
