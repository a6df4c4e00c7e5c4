#include "ltlib/platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <new>
#include <string>

namespace LTLib::Platform {

struct File {
  int descriptor;
};

namespace {

FileResult resultOf(int answer) {
  if (answer == 0) {
    return FileResult::kDone;
  }
  switch (errno) {
    case ENOENT:
    case ENOTDIR:
      return FileResult::kAbsent;
    case ENOSYS:
    case EOPNOTSUPP:
    case EPERM:
    case EMLINK:
      return FileResult::kUnsupported;
    default:
      return FileResult::kFailed;
  }
}

template <class Call>
auto retried(Call call) {
  auto answer = call();
  while (answer == -1 && errno == EINTR) {
    answer = call();
  }
  return answer;
}

File* wrap(int descriptor) {
  if (descriptor < 0) {
    return nullptr;
  }
  auto* file = new (std::nothrow) File{descriptor};
  if (file == nullptr) {
    ::close(descriptor);
  }
  return file;
}

bool isFolder(int descriptor) {
  struct stat found {};
  return ::fstat(descriptor, &found) == 0 && S_ISDIR(found.st_mode);
}

File* openForReading(const char* path) {
  const int descriptor = retried([&] { return ::open(path, O_RDONLY | O_CLOEXEC); });
  if (descriptor >= 0 && isFolder(descriptor)) {
    ::close(descriptor);
    return nullptr;
  }
  return wrap(descriptor);
}

// Devices keep their own permissions: only a regular file is given those of the store.
bool takePermissions(int descriptor, FilePermissions permissions) {
  struct stat found {};
  if (::fstat(descriptor, &found) != 0) {
    return false;
  }
  return !S_ISREG(found.st_mode) || (found.st_mode & 07777) == permissions ||
         ::fchmod(descriptor, permissions) == 0;
}

File* openForWriting(const char* path, const FilePermissions* permissions) {
  const mode_t mode = permissions != nullptr ? (*permissions & 0666) : 0666;
  const int descriptor =
      retried([&] { return ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode); });
  if (descriptor >= 0 && permissions != nullptr && !takePermissions(descriptor, *permissions)) {
    ::close(descriptor);
    return nullptr;
  }
  return wrap(descriptor);
}

FileResult read(File& file, char* buffer, std::size_t capacity, std::size_t* taken) {
  const ssize_t count = retried([&] { return ::read(file.descriptor, buffer, capacity); });
  *taken = count > 0 ? static_cast<std::size_t>(count) : 0;
  return count >= 0 ? FileResult::kDone : FileResult::kFailed;
}

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

// Devices and pipes have nothing to bring anywhere and say so with EINVAL.
FileResult flush(File& file) {
  const int answer = retried([&] { return ::fsync(file.descriptor); });
  return answer == 0 || errno == EINVAL ? FileResult::kDone : FileResult::kFailed;
}

FileResult close(File* file) {
  const int descriptor = file->descriptor;
  delete file;
  // After EINTR the descriptor is gone all the same; the text was flushed before.
  return ::close(descriptor) == 0 || errno == EINTR ? FileResult::kDone : FileResult::kFailed;
}

FileResult status(const char* path, FileStatus* found) {
  struct stat seen {};
  const FileResult result = resultOf(::stat(path, &seen));
  if (result == FileResult::kDone) {
    found->regular = S_ISREG(seen.st_mode);
    found->permissions = seen.st_mode & 07777;
  }
  return result;
}

FileResult remove(const char* path) {
  return resultOf(::unlink(path));
}

FileResult link(const char* path, const char* second) {
  return resultOf(::link(path, second));
}

FileResult rename(const char* from, const char* to) {
  return resultOf(::rename(from, to));
}

FileResult flushDirectory(const char* path) {
  const std::string whole(path);
  const std::size_t slash = whole.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : whole.substr(0, slash + 1);
  const int descriptor =
      retried([&] { return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  if (descriptor < 0) {
    // A directory that may be written but not listed cannot be flushed by itself.
    return errno == EACCES ? FileResult::kUnsupported : FileResult::kFailed;
  }
  const int answer = retried([&] { return ::fsync(descriptor); });
  const FileResult result =
      answer == 0 || errno == EINVAL ? FileResult::kDone : FileResult::kFailed;
  ::close(descriptor);
  return result;
}

}  // namespace

FileCalls& fileCalls() noexcept {
  static FileCalls s_calls{openForReading, openForWriting, read, write,  flush,         close,
                           status,         remove,         link, rename, flushDirectory};
  return s_calls;
}

char directorySeparator() noexcept {
  return '/';
}

}  // namespace LTLib::Platform
