// The file behind a named lock: where it lies, how it is opened, taken and given up.
//
// The kernel's lock on the open file excludes other processes and goes with its holder, however
// that ends. The length of the file is the mark of an owner: 1 while the lock is owned, 0 while it
// is free, so that one who obtains a marked file knows that the last owner never gave it up. A
// length needs no room on the device, and nothing else of the file is ever looked at.
//
// Every user of the machine may write the file and so can forge or erase that mark: the worst is a
// false report or a missed one. Who creates a file first owns it: that user can keep others from
// opening it, which fails, and can remove it under its holders, as a cleaner can. Whoever comes
// after a removal gets a new file and does not meet the holder of the old one.
#ifndef LTLIB_PLATFORM_POSIX_LOCK_FILE_H
#define LTLIB_PLATFORM_POSIX_LOCK_FILE_H

#include <sys/types.h>

#include <string>

namespace LTLib::Platform {

/// The path of the file for a lock's name; different for different names. Throws std::bad_alloc.
[[nodiscard]] std::string lockFilePath(const std::string& name);

/// An open lock file, or none as long as the descriptor is negative.
struct LockFile {
  std::string path;
  int descriptor = -1;
  dev_t device = 0;
  ino_t inode = 0;
};

/// Opens the file, creating it for all users if need be; does nothing on an open one. Gives 0 or
/// the system's number: for a link, a folder or anything but a regular file with one name too.
[[nodiscard]] int openLockFile(LockFile& file) noexcept;

/// Closes the file, which gives its lock up unless a forked child still has a copy open.
void closeLockFile(LockFile& file) noexcept;

/// Waits without limit for the lock on the open file. Gives 0 or the system's number.
[[nodiscard]] int waitForLockFile(const LockFile& file) noexcept;

/// How a file that was just locked was found.
enum class LockFileState {
  kFree,       // nobody's: now marked as owned
  kAbandoned,  // marked by an owner that is no more: still marked
  kReplaced,   // no longer the file of that name
  kFailed,     // cannot be looked at or marked; errno says why
};

/// Looks at the locked file and marks it as owned.
[[nodiscard]] LockFileState markLockFile(const LockFile& file) noexcept;

/// Takes the owner's mark away. Requires: the lock is held.
void unmarkLockFile(const LockFile& file) noexcept;

/// Gives the lock up and leaves the mark as it is. Copies in forked children do not keep it.
void unlockLockFile(const LockFile& file) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_POSIX_LOCK_FILE_H
