#include "ltlib/platform/posix/lock_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <span>

#include "ltlib/platform/posix/sha256.h"

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
constexpr int kOpenFlags = O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

// Creation and removal by others can cross with ours; nobody can make that go on for ever.
constexpr int kAttempts = 100;

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
  const int descriptor = open(lockFolder(), O_TMPFILE | O_RDWR | O_CLOEXEC, kEverybody);
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
  const int descriptor = open(path, kOpenFlags | O_CREAT | O_EXCL, kEverybody);
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

// A second name would let one file be two locks, or a mark be set on somebody's other file.
int accept(LockFile& file, int descriptor) noexcept {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) {
    return closeWith(descriptor, errno);
  }
  if (status.st_nlink == 0) {
    return closeWith(descriptor, ENOENT);
  }
  if (!S_ISREG(status.st_mode) || status.st_nlink != 1) {
    return closeWith(descriptor, EPERM);
  }
  file.descriptor = descriptor;
  file.device = status.st_dev;
  file.inode = status.st_ino;
  return 0;
}

int openExisting(LockFile& file) noexcept {
  const int descriptor = open(file.path.c_str(), kOpenFlags);
  return descriptor < 0 ? errno : accept(file, descriptor);
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

int openLockFile(LockFile& file) noexcept {
  if (file.descriptor >= 0) {
    return 0;
  }
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    int error = openExisting(file);
    if (error == ENOENT) {
      error = create(file.path.c_str());
      if (error == 0) {
        continue;
      }
    }
    return error;
  }
  return ESTALE;
}

void closeLockFile(LockFile& file) noexcept {
  if (file.descriptor >= 0) {
    close(file.descriptor);
    file.descriptor = -1;
  }
}

int waitForLockFile(const LockFile& file) noexcept {
  while (flock(file.descriptor, LOCK_EX) != 0) {
    if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

LockFileState markLockFile(const LockFile& file) noexcept {
  struct stat named {};
  if (lstat(file.path.c_str(), &named) != 0) {
    return errno == ENOENT ? LockFileState::kReplaced : LockFileState::kFailed;
  }
  // An open file keeps its number, so that equal numbers are one file.
  if (named.st_dev != file.device || named.st_ino != file.inode) {
    return LockFileState::kReplaced;
  }
  if (named.st_size != 0) {
    return LockFileState::kAbandoned;
  }
  return ftruncate(file.descriptor, 1) == 0 ? LockFileState::kFree : LockFileState::kFailed;
}

void unmarkLockFile(const LockFile& file) noexcept {
  static_cast<void>(!ftruncate(file.descriptor, 0));
}

void unlockLockFile(const LockFile& file) noexcept {
  flock(file.descriptor, LOCK_UN);
}

}  // namespace LTLib::Platform
