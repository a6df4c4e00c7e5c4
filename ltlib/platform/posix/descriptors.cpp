#include "ltlib/platform/posix/descriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace LTLib::Platform {

int openAboveStandardStreams(const char* path, int flags, mode_t mode) noexcept {
  const int first = open(path, flags | O_CLOEXEC, mode);
  if (first < 0 || first > STDERR_FILENO) {
    return first;
  }
  const int moved = fcntl(first, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  close(first);
  errno = error;
  return moved;
}

}  // namespace LTLib::Platform
