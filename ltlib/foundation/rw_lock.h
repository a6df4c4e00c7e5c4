/// \file
/// \brief A lock for many readers or one writer, which prefers readers, and its scope guards.
///
/// Threads: any thread may lock; any thread may unlock what another locked, since unlock goes by
/// the state and not by the caller. Waits have no time limit.
///
/// | state   | readLock             | writeLock            | unlock                         |
/// |---------|----------------------|----------------------|--------------------------------|
/// | free    | reading              | writing              | nothing happens                |
/// | reading | passes               | counts itself, waits | one reader less; see below     |
/// | writing | counts itself, waits | counts itself, waits | lets those in that wait: below |
///
/// When the last reader unlocks, a writer that waits is let in. When a writer unlocks, all readers
/// that wait are let in, or one writer if no reader waits. If nobody waits the lock is free.
///
/// A reader that arrives during reading passes even when writers wait, so that a steady flow of
/// readers keeps writers out. Writers come in no particular order. A thread may take the read lock
/// again while it reads, with one more unlock; any other lock by a thread that holds this one waits
/// for itself.
///
/// Forks: the child has the lock as it stood. Where another thread held it or waited for it at the
/// fork it is of no use there, since nobody gives that back.
///
/// Failure: QSException with 0x80004005 when the system refuses an event at construction.
#ifndef LTLIB_FOUNDATION_RW_LOCK_H
#define LTLIB_FOUNDATION_RW_LOCK_H

#include "ltlib/export.h"

namespace LTLib {

class RWLockImpl;

/// The lock; the table above tells its states.
class LTLIB_EXPORT RWLock {
 public:
  RWLock();

  /// Requires: nobody holds the lock or waits for it.
  ~RWLock();

  RWLock(const RWLock&) = delete;
  RWLock& operator=(const RWLock&) = delete;

  void readLock();
  void writeLock();

  /// Undoes one lock of either kind.
  void unlock();

 private:
  RWLockImpl* m_impl;
};

/// Holds the lock from construction to destruction, as a writer or as a reader. A failing release
/// ends the process.
class LTLIB_EXPORT ScopedRWLock {
 public:
  ScopedRWLock(RWLock& lock, bool write);
  ~ScopedRWLock();
  ScopedRWLock(const ScopedRWLock&) = delete;
  ScopedRWLock& operator=(const ScopedRWLock&) = delete;

 private:
  RWLock& m_lock;
};

/// As ScopedRWLock, as a reader.
class LTLIB_EXPORT ScopedReadRWLock {
 public:
  explicit ScopedReadRWLock(RWLock& lock);
  ~ScopedReadRWLock();
  ScopedReadRWLock(const ScopedReadRWLock&) = delete;
  ScopedReadRWLock& operator=(const ScopedReadRWLock&) = delete;

 private:
  RWLock& m_lock;
};

/// As ScopedRWLock, as a writer.
class LTLIB_EXPORT ScopedWriteRWLock {
 public:
  explicit ScopedWriteRWLock(RWLock& lock);
  ~ScopedWriteRWLock();
  ScopedWriteRWLock(const ScopedWriteRWLock&) = delete;
  ScopedWriteRWLock& operator=(const ScopedWriteRWLock&) = delete;

 private:
  RWLock& m_lock;
};

}  // namespace LTLib

#endif  // LTLIB_FOUNDATION_RW_LOCK_H
