/// \file
/// \brief A lock between processes: all that use one name on one machine share one mutex, whoever
/// runs them.
///
/// Threads: lock and unlock may be called from any thread. A thread owns the mutex, not an object:
/// two objects of one name are one mutex, and the owner may lock it again through either. Waits
/// have no time limit.
///
/// | event                       | free          | held, depth n          | abandoned             |
/// |-----------------------------|---------------|------------------------|-----------------------|
/// | lock by the owner           |               | depth n + 1            |                       |
/// | lock by another             | held, depth 1 | waits                  | held, depth 1; throws |
/// | unlock by the owner         |               | depth n - 1; free at 0 |                       |
/// | unlock by another           | free          | held, depth n          | abandoned             |
/// | end of the owner's thread   |               | abandoned              |                       |
/// | end of the owner's process  |               | abandoned              |                       |
/// | fork of the owner's process |               | held by the parent     |                       |
///
/// A process ends by itself or is killed. After a fork the mutex is still the parent's thread's;
/// the child owns nothing and may wait for it.
///
/// "Abandoned" is told once, by the exception of the lock that obtains the mutex: its thread is the
/// owner and has one unlock to do. A name left over from a crash never blocks. On Windows a mutex
/// goes with the last object of its name, so that only who had one then is told.
///
/// Names: any text of any length, compared byte by byte, is a name of its own on POSIX systems. On
/// Windows the system's rules hold: no backslash, less than 260 bytes, and a name is one session's:
/// users who are logged on at the same time, and services, each have a mutex of their own.
///
/// On POSIX systems a mutex is a file in /dev/shm, or in /tmp where the system has no such folder.
/// It stays until the system restarts, or a cleaner removes it: one who locks after that gets a new
/// mutex of the name, even while the old one is held. An owner whose program closes the descriptor
/// gives the mutex up by that, and the next owner is told "abandoned"; the number may go to another
/// file, which is left alone. A process that may not make files grow can be an owner like any
/// other, but that its end may go untold where the file is another user's and new.
///
/// A fork waits for nobody's named mutex.
///
/// Other users: the name is shared with all of them, so that each can hold the mutex for as long as
/// it likes, and a hostile one can cause a report "abandoned" that is not true, or prevent one.
/// Where another user has put something in the way of the name, or a file that cannot be opened,
/// construction fails; it neither waits nor makes do with a mutex that not everybody shares.
///
/// Failure: QSException with 0x80004005 and no file or line, with the texts told at each operation.
#ifndef LTLIB_FOUNDATION_NAMED_MUTEX_H
#define LTLIB_FOUNDATION_NAMED_MUTEX_H

#include <string>

#include "ltlib/export.h"

namespace LTLib {

namespace Platform {
struct NamedLock;
}

/// One access to a named mutex.
class LTLIB_EXPORT NamedMutexImpl {
 public:
  /// Opens the mutex, making it if need be, and waits for nobody. Copies the name. Throws
  /// "cannot create named LTLib::Mutex " and the name when that fails, as with a null name; where a
  /// file is in the way, a colon, which file that is and whose follow.
  explicit NamedMutexImpl(const char* name);

  /// Requires: nobody holds the mutex through this object or waits for it.
  ~NamedMutexImpl();

  NamedMutexImpl(const NamedMutexImpl&) = delete;
  NamedMutexImpl& operator=(const NamedMutexImpl&) = delete;

  /// Takes the mutex. Throws "cannot lock LTLib::NamedMutex ", the name, and " (abandoned)" when
  /// the last owner ended without giving it up: the calling thread then owns it all the same.
  /// Throws the same text with ", error: " and the system's number, or with nothing behind the
  /// name, when the system refuses: the calling thread then does not own it.
  void lock();

  /// Undoes one lock; does nothing on a thread that does not own the mutex.
  void unlock();

 private:
  Platform::NamedLock* m_lock;
  std::string m_name;
};

/// A mutex by name; every operation is that of its NamedMutexImpl.
class LTLIB_EXPORT NamedMutex {
 public:
  explicit NamedMutex(const char* name);
  ~NamedMutex();

  NamedMutex(const NamedMutex&) = delete;
  NamedMutex& operator=(const NamedMutex&) = delete;

  void lock();
  void unlock();

 private:
  NamedMutexImpl* m_impl;
};

}  // namespace LTLib

#endif  // LTLIB_FOUNDATION_NAMED_MUTEX_H
