// Numbers 0 to 2 belong to whoever prints, also in a process that was started without them: a file
// of the library there would be written to by the next message.
#include "ltlib/platform/linux/descriptors.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "ltlib/platform/linux/fork_window.h"
#include "ltlib/platform/lock_wait.h"

namespace LTLib::Platform {
namespace {

int lockUninterrupted(int descriptor, int operation) noexcept {
  while (flock(descriptor, operation) != 0) {
    if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

// The kernel has no such wait with an end, but for a signal, which belongs to the program.
int lockWithin(int descriptor, std::chrono::milliseconds limit) noexcept {
  constexpr std::chrono::milliseconds kPause{10};
  const auto end = std::chrono::steady_clock::now() + limit;
  for (;;) {
    const int error = lockUninterrupted(descriptor, LOCK_EX | LOCK_NB);
    if (error != EWOULDBLOCK) {
      return error;
    }
    if (std::chrono::steady_clock::now() >= end) {
      return ETIMEDOUT;
    }
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace

int openAboveStandardStreams(const char* path, int flags, mode_t mode) noexcept {
  return aboveStandardStreams(open(path, flags | O_CLOEXEC, mode));
}

int aboveStandardStreams(int first) noexcept {
  if (first < 0 || first > STDERR_FILENO) {
    return first;
  }
  const int moved = fcntl(first, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  close(first);
  errno = error;
  return moved;
}

int waitForKernelLock(int descriptor) noexcept {
  // The lock is free nearly always. Only a wait for another process has to let forks pass by.
  const int error = lockUninterrupted(descriptor, LOCK_EX | LOCK_NB);
  if (error != EWOULDBLOCK) {
    return error;
  }
  const ForkWindow window;
  const auto limit = lockWaitLimit();
  return limit ? lockWithin(descriptor, *limit) : lockUninterrupted(descriptor, LOCK_EX);
}

}  // namespace LTLib::Platform
