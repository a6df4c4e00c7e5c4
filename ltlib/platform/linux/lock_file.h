// The file behind a named lock: where it lies, how it is opened, taken and given up.
//
// The kernel's lock on the open file excludes other processes and goes with its holder, however
// that ends. The length of the file is the mark of an owner: odd while the lock is owned, even while
// it is free, so that one who obtains a marked file knows that the last owner never gave it up. Each
// step takes one byte away, since a process may be forbidden to make files grow; where a file is
// used up, one that may makes it long again. A length needs no room on the device, and the bytes
// are never looked at.
//
// A file without length is one that nobody could make long so far. Of such a file the owner's right
// to execute it is the mark, which only the user who owns the file and root can set: the end of
// another user that may not make files grow goes untold.
//
// Every user of the machine may write the file and so can forge or erase that mark: the worst is a
// false report or a missed one. Who creates a file first owns it: that user can keep others from
// opening it, which fails, and can remove or rename it under those who have it open, as a cleaner
// can. Whoever opens the lock after that gets a new file and does not meet the holder of the old
// one; who has a removed file open moves on to the new one with the next lock.
//
// A program may close descriptors that it does not know, and the number may come back as a file of
// its own. Each call therefore makes sure that the number still stands for the lock file, and
// leaves it alone where it does not: nothing is read or written here, so that the position in the
// open file is free to be a number that no other has, and to ask for it costs half of what the
// file's status does.
#ifndef LTLIB_PLATFORM_LINUX_LOCK_FILE_H
#define LTLIB_PLATFORM_LINUX_LOCK_FILE_H

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
  off_t position = 0;      // in no other open file of the process
  off_t markedLength = 0;  // while the lock is owned; 0 where the mark is no length
  bool mayGrow = false;    // whether the process could make files long when it opened this one
};

/// Whether the file is open and nobody else has closed it meanwhile.
[[nodiscard]] bool isOpenLockFile(const LockFile& file) noexcept;

/// Opens the file, creating it for all users if need be; does nothing on one that is open still.
/// Gives 0 or the system's number: for a link, a folder or anything but a regular file with one
/// name too.
[[nodiscard]] int openLockFile(LockFile& file) noexcept;

/// What is in the way of a file that could not be opened for that reason, and whose it is, as "the
/// file PATH of the user 1000 is no regular file". Throws std::bad_alloc.
[[nodiscard]] std::string describeObstacle(const LockFile& file, int error);

/// Closes the file, which gives its lock up unless a forked child still has a copy open.
void closeLockFile(LockFile& file) noexcept;

/// Waits without limit for the lock on the open file. Gives 0 or the system's number.
[[nodiscard]] int waitForLockFile(const LockFile& file) noexcept;

/// How a file that was just locked was found.
enum class LockFileState {
  kFree,       // nobody's: now marked as owned
  kAbandoned,  // marked by an owner that is no more: still marked
  kReplaced,   // no longer the file of that name, or closed by others
  kFailed,     // cannot be marked; errno says why
};

/// Looks at the locked file and marks it as owned.
[[nodiscard]] LockFileState markLockFile(LockFile& file) noexcept;

/// What a file's owner leaves behind.
enum class LockFileEnd { kReleased, kAbandoned };

/// Gives the lock up, and takes the owner's mark away unless it is to tell the next owner. Copies
/// of the descriptor in forked children do not keep the lock. Requires: the lock is held.
void giveUpLockFile(const LockFile& file, LockFileEnd end) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_LINUX_LOCK_FILE_H
