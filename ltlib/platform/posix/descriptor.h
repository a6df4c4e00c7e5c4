// Numbers of open files that are safe from what the program does with its standard streams.
#ifndef LTLIB_PLATFORM_POSIX_DESCRIPTOR_H
#define LTLIB_PLATFORM_POSIX_DESCRIPTOR_H

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace LTLib::Platform {

/// The same open file under a number of 3 or more: where standard streams are closed, a file of
/// ours under one of their numbers would get what is written to them. Takes `descriptor` over; a
/// negative one, and a failure, give -1 with errno set.
[[nodiscard]] inline int aboveStandard(int descriptor) noexcept {
  if (descriptor < 0 || descriptor > STDERR_FILENO) {
    return descriptor;
  }
  const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return moved;
}

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_POSIX_DESCRIPTOR_H
