#include "ltlib/platform/files.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <vector>

#include "ltlib/platform/linux/descriptors.h"
#include "ltlib/platform/process.h"

namespace LTLib::Platform {

struct File {
  int descriptor;
  std::uint32_t locker = 0;  // the process that holds the file's lock by this descriptor
};

namespace {

// A chain of links that is longer leads round in a circle.
constexpr int kMostLinks = 40;

constexpr mode_t kPermissions = 0777;

FileResult failure() {
  switch (errno) {
    case ENOENT:
    case ENOTDIR:
      return FileResult::kAbsent;
    case ENOSYS:
    case EOPNOTSUPP:
      return FileResult::kUnsupported;
    default:
      return FileResult::kFailed;
  }
}

FileResult resultOf(int answer) {
  return answer == 0 ? FileResult::kDone : failure();
}

// A program's signal handlers may cut short whatever waits; the call was not made then.
template <class Call>
auto retried(Call call) {
  auto answer = call();
  while (answer == -1 && errno == EINTR) {
    answer = call();
  }
  return answer;
}

// Closes without touching the number of the failure that led here.
FileResult closedWith(int descriptor, FileResult result) {
  const int kept = errno;
  ::close(descriptor);
  errno = kept;
  return result;
}

FileResult wrap(int descriptor, File** file) {
  *file = new (std::nothrow) File{descriptor};
  if (*file == nullptr) {
    errno = ENOMEM;
    return closedWith(descriptor, FileResult::kFailed);
  }
  return FileResult::kDone;
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

// As the system itself decides in folders that everybody may write: who can lay a link there could
// lay the file as well, or need not be feared.
bool trusted(const struct stat& link, const std::string& path) {
  if (link.st_uid == ::geteuid() || link.st_uid == 0) {
    return true;
  }
  struct stat folder {};
  return ::stat(folderOf(path).c_str(), &folder) == 0 && folder.st_uid == link.st_uid;
}

FileResult followLink(std::string* path, off_t size) {
  // One byte more than the link had, so that one that has grown since shows.
  std::string target(static_cast<std::size_t>(size) + 1, '\0');
  const ssize_t length = ::readlink(path->c_str(), target.data(), target.size());
  if (length < 0 || static_cast<std::size_t>(length) >= target.size()) {
    return FileResult::kFailed;
  }
  target.resize(static_cast<std::size_t>(length));
  *path = target.starts_with('/') ? target : folderOf(*path) + target;
  return FileResult::kDone;
}

FileResult resolve(const char* path, std::string* target) {
  *target = path;
  for (int links = 0; links < kMostLinks; ++links) {
    struct stat seen {};
    if (::lstat(target->c_str(), &seen) != 0) {
      const FileResult result = failure();
      // A link may lead to a file that is still to be made.
      return result == FileResult::kAbsent ? FileResult::kDone : result;
    }
    if (!S_ISLNK(seen.st_mode)) {
      return FileResult::kDone;
    }
    if (!trusted(seen, *target)) {
      return FileResult::kForeignLink;
    }
    if (const FileResult result = followLink(target, seen.st_size); result != FileResult::kDone) {
      return result;
    }
  }
  errno = ELOOP;
  return FileResult::kFailed;
}

// O_NONBLOCK keeps a pipe from holding the call up; to a regular file it means nothing.
FileResult open(const char* path, Links links, File** file) {
  *file = nullptr;
  const int follow = links == Links::kRefused ? O_NOFOLLOW : 0;
  const int descriptor = retried(
      [&] { return openAboveStandardStreams(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | follow, 0); });
  if (descriptor < 0) {
    return failure();
  }
  struct stat found {};
  if (::fstat(descriptor, &found) != 0) {
    return closedWith(descriptor, FileResult::kFailed);
  }
  // Looked at through the descriptor: the name may lead elsewhere by now.
  if (!S_ISREG(found.st_mode)) {
    errno = S_ISDIR(found.st_mode) ? EISDIR : EINVAL;
    return closedWith(descriptor, FileResult::kFailed);
  }
  return wrap(descriptor, file);
}

constexpr char kAccessList[] = "system.posix_acl_access";

// With a list of its own, a file's group bits say what the list may grant at most. Where it cannot
// be carried over those bits must go, and a list that the folder gave the new file always goes.
bool carryAccessList(int descriptor, const char* like, mode_t& mode) {
  const ssize_t size = ::lgetxattr(like, kAccessList, nullptr, 0);
  if (size > 0) {
    std::vector<char> list(static_cast<std::size_t>(size));
    if (::lgetxattr(like, kAccessList, list.data(), list.size()) == size &&
        ::fsetxattr(descriptor, kAccessList, list.data(), list.size(), 0) == 0) {
      return true;
    }
    mode &= ~static_cast<mode_t>(S_IRWXG);
  }
  return ::fremovexattr(descriptor, kAccessList) == 0 || errno == ENODATA || errno == EOPNOTSUPP;
}

// Somebody who falls out of a class of users, the owner or the group, falls into a later one.
mode_t narrowed(mode_t mode, bool ownerKept, bool groupKept) {
  mode_t user = (mode >> 6) & 7;
  mode_t group = (mode >> 3) & 7;
  mode_t others = mode & 7;
  if (!groupKept) {
    group &= others;
    others = group;
  }
  if (!ownerKept) {
    group &= user;
    others &= user;
  }
  return user << 6 | group << 3 | others;
}

bool takeAfter(int descriptor, const char* like) {
  struct stat former {};
  struct stat made {};
  if (::lstat(like, &former) != 0 || ::fstat(descriptor, &made) != 0) {
    return false;
  }
  const bool groupKept = made.st_gid == former.st_gid ||
                         ::fchown(descriptor, static_cast<uid_t>(-1), former.st_gid) == 0;
  const bool ownerKept = made.st_uid == former.st_uid ||
                         ::fchown(descriptor, former.st_uid, static_cast<gid_t>(-1)) == 0;
  // The mode last: a change of owner takes bits of it away.
  mode_t mode = narrowed(former.st_mode & kPermissions, ownerKept, groupKept);
  return carryAccessList(descriptor, like, mode) && ::fchmod(descriptor, mode) == 0;
}

// What the administrator makes in somebody's folder belongs to that somebody, who could otherwise
// neither read nor change it. A system that refuses leaves the file as it is.
void giveToFolderOwner(int descriptor, const char* path) {
  struct stat folder {};
  if (::geteuid() == 0 && ::stat(folderOf(path).c_str(), &folder) == 0) {
    static_cast<void>(!::fchown(descriptor, folder.st_uid, folder.st_gid));
  }
}

// A file that could not be completed goes again: nobody else has had its name meanwhile.
template <class Complete>
FileResult make(const char* path, mode_t mode, File** file, Complete complete) {
  *file = nullptr;
  constexpr int kExclusively = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_NOCTTY;
  const int descriptor =
      retried([&] { return openAboveStandardStreams(path, kExclusively, mode); });
  if (descriptor < 0) {
    return failure();
  }
  FileResult result = FileResult::kFailed;
  if (complete(descriptor)) {
    result = wrap(descriptor, file);
  } else {
    closedWith(descriptor, result);
  }
  if (result != FileResult::kDone) {
    const int kept = errno;
    ::unlink(path);
    errno = kept;
  }
  return result;
}

FileResult create(const char* path, const char* like, File** file) {
  // Nobody else may open the file until it is as closed as the one that it takes after.
  const mode_t mode = like != nullptr ? S_IRUSR | S_IWUSR : 0666;
  return make(path, mode, file, [&](int descriptor) {
    if (like != nullptr) {
      return takeAfter(descriptor, like);
    }
    giveToFolderOwner(descriptor, path);
    return true;
  });
}

FileResult createForAll(const char* path, File** file) {
  constexpr mode_t kReadByAll = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
  return make(path, kReadByAll, file, [&](int descriptor) {
    giveToFolderOwner(descriptor, path);
    return ::fchmod(descriptor, kReadByAll) == 0;
  });
}

FileResult read(File& file, char* buffer, std::size_t capacity, std::size_t* taken) {
  const ssize_t count = retried([&] { return ::read(file.descriptor, buffer, capacity); });
  *taken = count > 0 ? static_cast<std::size_t>(count) : 0;
  return count >= 0 ? FileResult::kDone : FileResult::kFailed;
}

// A call may take less than it was given, on a full disk above all, and tells why at the next.
FileResult write(File& file, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = retried([&] { return ::write(file.descriptor, bytes, count); });
    if (written <= 0) {
      return FileResult::kFailed;
    }
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return FileResult::kDone;
}

FileResult flush(File& file) {
  return retried([&] { return ::fsync(file.descriptor); }) == 0 ? FileResult::kDone
                                                                : FileResult::kFailed;
}

// Puts an opening for writing behind the same number, where the caller may write the file.
void openForWritingToo(int descriptor) {
  const std::string self = "/proc/self/fd/" + std::to_string(descriptor);
  const int writable = ::open(self.c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY);
  if (writable >= 0) {
    ::dup3(writable, descriptor, O_CLOEXEC);
    ::close(writable);
  }
}

// Network file systems may lock through a descriptor for writing alone, and say EBADF to others.
FileResult lock(File& file) {
  int error = waitForKernelLock(file.descriptor);
  if (error == EBADF) {
    openForWritingToo(file.descriptor);
    error = waitForKernelLock(file.descriptor);
  }
  if (error != 0) {
    errno = error;
    // That there are no locks here, and not that somebody holds one.
    const bool noLocks =
        error == EBADF || error == ENOLCK || error == ENOSYS || error == EOPNOTSUPP;
    return noLocks ? FileResult::kUnsupported : FileResult::kFailed;
  }
  file.locker = processId();
  return FileResult::kDone;
}

// A forked child's copy of the descriptor would keep the lock, so that it is given up by itself; and
// the child, which has only the copy, must not give up its parent's.
FileResult close(File* file) {
  const int descriptor = file->descriptor;
  if (file->locker == processId()) {
    ::flock(descriptor, LOCK_UN);
  }
  delete file;
  // After EINTR the descriptor is gone all the same; the text was flushed before.
  return ::close(descriptor) == 0 || errno == EINTR ? FileResult::kDone : FileResult::kFailed;
}

FileResult tell(int answer, const struct stat& seen, FileStatus* found) {
  if (answer != 0) {
    return failure();
  }
  *found = {S_ISREG(seen.st_mode), {seen.st_dev, seen.st_ino}};
  return FileResult::kDone;
}

FileResult status(const char* path, FileStatus* found) {
  struct stat seen {};
  return tell(::lstat(path, &seen), seen, found);
}

FileResult statusOf(File& file, FileStatus* found) {
  struct stat seen {};
  return tell(::fstat(file.descriptor, &seen), seen, found);
}

FileResult remove(const char* path) {
  return resultOf(::unlink(path));
}

// The system refuses a second name to those who do not own the file as it refuses it to file
// systems without such names: with the same number.
FileResult link(const char* path, const char* second) {
  const int answer = ::link(path, second);
  return answer != 0 && (errno == EPERM || errno == EMLINK) ? FileResult::kUnsupported
                                                            : resultOf(answer);
}

FileResult rename(const char* from, const char* to) {
  return resultOf(::rename(from, to));
}

FileResult exchange(const char* one, const char* other) {
  // EINVAL is what a file system says that does not know this step.
  const int answer = ::renameat2(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE);
  return answer != 0 && errno == EINVAL ? FileResult::kUnsupported : resultOf(answer);
}

FileResult flushDirectory(const char* path) {
  const int descriptor =
      retried([&] { return ::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  if (descriptor < 0) {
    // A directory that may be written but not listed cannot be flushed by itself.
    return errno == EACCES ? FileResult::kUnsupported : FileResult::kFailed;
  }
  // Some file systems have nothing to flush in a folder and say EINVAL.
  const int answer = retried([&] { return ::fsync(descriptor); });
  return closedWith(descriptor,
                    answer == 0 || errno == EINVAL ? FileResult::kDone : FileResult::kFailed);
}

}  // namespace

FileCalls& fileCalls() noexcept {
  static constinit FileCalls s_calls{resolve, open,   create,   createForAll,  read,     write,
                                     flush,   lock,   close,    status,        statusOf, remove,
                                     link,    rename, exchange, flushDirectory};
  return s_calls;
}

std::string lastFileFailure() {
  return std::strerror(errno);
}

char directorySeparator() noexcept {
  return '/';
}

}  // namespace LTLib::Platform
