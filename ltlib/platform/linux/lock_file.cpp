#include "ltlib/platform/linux/lock_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>

#include "ltlib/platform/linux/descriptors.h"
#include "ltlib/platform/linux/sha256.h"

namespace LTLib::Platform {
namespace {

// Sticky, so that others cannot remove a file; in memory, so that nothing outlives a restart. The
// folder itself serves and not one in it, which the user who makes it first would own.
constexpr char kMemoryFolder[] = "/dev/shm";
constexpr char kTemporaryFolder[] = "/tmp";

// Names up to this length stay readable; 255 is the limit of a file's name.
constexpr std::size_t kLongestPlainName = 64;

constexpr mode_t kEverybody = 0666;

// O_NONBLOCK keeps a planted pipe or lease from holding the call up.
constexpr int kOpenFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

// Creation and removal by others can cross with ours; nobody can make that go on for ever.
constexpr int kAttempts = 100;

// Enough for half a million owners until it has to grow again.
constexpr rlim_t kFullLength = 1 << 20;

// Far behind the end of whatever a program may read or write, and within what every file system
// allows.
constexpr off_t kFirstPosition = 0x9E3779B97F;

// The mark of a file without length.
// An owner without a right to make files grow, in a file that nobody ever did, leaves this bit.
constexpr mode_t kOwnedMode = S_IXUSR;

std::string hexOf(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

bool isFolder(const char* path) noexcept {
  struct stat status {};
  return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// The same in every process of the machine: it depends on what the system has, never on rights.
const char* lockFolder() noexcept {
  return isFolder(kMemoryFolder) ? kMemoryFolder : kTemporaryFolder;
}

int closeWith(int descriptor, int error) noexcept {
  close(descriptor);
  return error;
}

// The file gets its name when its permissions are complete, so that nobody finds a file that he
// may not open yet.
int createByLink(const char* path) noexcept {
  const int descriptor = openAboveStandardStreams(lockFolder(), O_TMPFILE | O_RDWR, kEverybody);
  if (descriptor < 0) {
    return errno;
  }
  char self[32];
  std::snprintf(self, sizeof self, "/proc/self/fd/%d", descriptor);
  const bool done = fchmod(descriptor, kEverybody) == 0 &&
                    linkat(AT_FDCWD, self, AT_FDCWD, path, AT_SYMLINK_FOLLOW) == 0;
  return closeWith(descriptor, done ? 0 : errno);
}

int createByName(const char* path) noexcept {
  const int descriptor = openAboveStandardStreams(path, kOpenFlags | O_CREAT | O_EXCL, kEverybody);
  if (descriptor < 0) {
    return errno;
  }
  // The permissions at creation are cut by the umask.
  return closeWith(descriptor, fchmod(descriptor, kEverybody) == 0 ? 0 : errno);
}

// A file that is already there is as good. Never O_CREAT on such a file: some systems refuse that
// for another user's file in a sticky folder.
int create(const char* path) noexcept {
  int error = createByLink(path);
  if (error != 0 && error != EEXIST) {
    error = createByName(path);
  }
  return error == EEXIST ? 0 : error;
}

// Even; 0 for a process that may not make files grow.
// The limit holds for each process by itself; a signal would end one that goes beyond.
off_t longestLength() noexcept {
  rlimit limit{};
  const bool known = getrlimit(RLIMIT_FSIZE, &limit) == 0;
  return static_cast<off_t>(known ? std::min(limit.rlim_cur, kFullLength) / 2 * 2 : 0);
}

// Never the same, since a number that was closed may come back as that of another lock.
off_t nextPosition() noexcept {
  constinit static std::atomic<off_t> s_next{kFirstPosition};
  return s_next.fetch_add(1, std::memory_order_relaxed);
}

// A second name would let one file be two locks, or a mark be set on somebody's other file.
int accept(LockFile& file, int descriptor) noexcept {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) {
    return closeWith(descriptor, errno);
  }
  // Removed by a cleaner between its opening and here; whoever comes next would lock another file.
  if (status.st_nlink == 0) {
    return closeWith(descriptor, ENOENT);
  }
  if (!S_ISREG(status.st_mode) || status.st_nlink != 1) {
    return closeWith(descriptor, EPERM);
  }
  file.position = lseek(descriptor, nextPosition(), SEEK_SET);
  if (file.position < 0) {
    return closeWith(descriptor, errno);
  }
  file.descriptor = descriptor;
  file.device = status.st_dev;
  file.inode = status.st_ino;
  file.mayGrow = longestLength() == kFullLength;
  return 0;
}

int openExisting(LockFile& file) noexcept {
  const int descriptor = openAboveStandardStreams(file.path.c_str(), kOpenFlags, 0);
  return descriptor < 0 ? errno : accept(file, descriptor);
}

bool isMarked(const struct stat& status) noexcept {
  return status.st_size > 0 ? status.st_size % 2 != 0 : (status.st_mode & kOwnedMode) != 0;
}

bool setMark(LockFile& file, off_t length) noexcept {
  // An owner uses up two bytes, one as it comes and one as it goes.
  if (length <= 2) {
    length = std::max(length, longestLength());
  }
  if (length > 0) {
    file.markedLength = length - 1;
    return ftruncate(file.descriptor, file.markedLength) == 0;
  }
  file.markedLength = 0;
  static_cast<void>(!fchmod(file.descriptor, kEverybody | kOwnedMode));
  return true;
}

// Somebody may have made the file shorter. Where it may not grow that has to be found out, since
// the try would end the process.
off_t lengthToGoOnFrom(const LockFile& file) noexcept {
  struct stat status {};
  if (file.mayGrow || fstat(file.descriptor, &status) != 0) {
    return file.markedLength;
  }
  return std::min(file.markedLength, status.st_size);
}

void takeMarkAway(const LockFile& file) noexcept {
  if (file.markedLength > 0) {
    static_cast<void>(!ftruncate(file.descriptor, lengthToGoOnFrom(file) / 2 * 2));
  } else {
    static_cast<void>(!fchmod(file.descriptor, kEverybody));
  }
}

}  // namespace

std::string lockFilePath(const std::string& name) {
  const std::string folder = std::string(lockFolder()) + "/ltlib-";
  if (name.size() > kLongestPlainName) {
    return folder + "digest-" + hexOf(sha256(name));
  }
  return folder + "name-" +
         hexOf({reinterpret_cast<const std::uint8_t*>(name.data()), name.size()});
}

bool isOpenLockFile(const LockFile& file) noexcept {
  return file.descriptor >= 0 && lseek(file.descriptor, 0, SEEK_CUR) == file.position;
}

int openLockFile(LockFile& file) noexcept {
  if (isOpenLockFile(file)) {
    return 0;
  }
  file.descriptor = -1;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    int error = openExisting(file);
    if (error == ENOENT) {
      // Whoever made the file, it is opened in the next round, as one that was there.
      error = create(file.path.c_str());
      if (error == 0) {
        continue;
      }
    }
    return error;
  }
  return ESTALE;
}

std::string describeObstacle(const LockFile& file, int error) {
  struct stat found {};
  if (lstat(file.path.c_str(), &found) != 0) {
    return "the file " + file.path + " cannot be made: " + std::strerror(error);
  }
  const std::string whose =
      "the file " + file.path + " of the user " + std::to_string(found.st_uid);
  return whose + (S_ISREG(found.st_mode) ? std::string(" cannot be used: ") + std::strerror(error)
                                         : std::string(" is no regular file"));
}

void closeLockFile(LockFile& file) noexcept {
  if (isOpenLockFile(file)) {
    close(file.descriptor);
  }
  file.descriptor = -1;
}

int waitForLockFile(const LockFile& file) noexcept {
  return waitForKernelLock(file.descriptor);
}

LockFileState markLockFile(LockFile& file) noexcept {
  struct stat status {};
  // Looked at anew under the lock: while this process waited, the file may have gone or been closed.
  if (fstat(file.descriptor, &status) != 0 || status.st_dev != file.device ||
      status.st_ino != file.inode || status.st_nlink != 1) {
    return LockFileState::kReplaced;
  }
  if (isMarked(status)) {
    file.markedLength = status.st_size;
    return LockFileState::kAbandoned;
  }
  return setMark(file, status.st_size) ? LockFileState::kFree : LockFileState::kFailed;
}

void giveUpLockFile(const LockFile& file, LockFileEnd end) noexcept {
  if (!isOpenLockFile(file)) {
    return;
  }
  if (end == LockFileEnd::kReleased) {
    takeMarkAway(file);
  }
  // By itself and not by a close, since a forked child may hold a copy of the descriptor.
  flock(file.descriptor, LOCK_UN);
}

}  // namespace LTLib::Platform
