// A lock between the processes of one machine, found by its name.
//
// The lock belongs to the thread that took it, and that thread may take it again. Two objects of
// one name are one lock, in one process or in several. An owner that ends without giving the lock
// up, by the end of its thread or of its process, is reported to the next owner once.
#ifndef LTLIB_PLATFORM_NAMED_LOCK_H
#define LTLIB_PLATFORM_NAMED_LOCK_H

#include <string>

namespace LTLib::Platform {

/// One process's access to a named lock; only the platform's side knows its shape.
struct NamedLock;

/// How a wait ended. With kObtained and kAbandoned the calling thread owns the lock.
enum class NamedLockStatus {
  kObtained,   // the lock is held
  kAbandoned,  // the lock is held; its last owner ended without giving it up
  kFailed,     // the lock is not held; the system's number says why
  kUnknown,    // the lock is not held; the system's answer means nothing here
};

struct NamedLockWait {
  NamedLockStatus status = NamedLockStatus::kFailed;
  unsigned long systemError = 0;
};

/// Opens the lock of that name, making it if need be; waits for nobody. Null when that fails;
/// `reason` then tells what is in the way and whose it is, if that is known.
[[nodiscard]] NamedLock* openNamedLock(const std::string& name, std::string& reason) noexcept;

/// Waits for the lock, without limit but for that of lock_wait.h.
[[nodiscard]] NamedLockWait waitForNamedLock(NamedLock& lock) noexcept;

/// Undoes one wait that obtained the lock; does nothing on a thread that does not own it.
void releaseNamedLock(NamedLock& lock) noexcept;

/// Closes this access. A null lock is fine.
void closeNamedLock(NamedLock* lock) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_NAMED_LOCK_H
