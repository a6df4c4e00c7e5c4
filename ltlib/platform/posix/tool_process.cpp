#include "ltlib/platform/tool_process.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

namespace LTLib::Platform {
namespace {

// Gives a number that is closed to the null device. The system gives out the lowest number that
// is free, so that going upwards fills the gaps one by one.
bool openIfClosed(int descriptor) {
  return ::fcntl(descriptor, F_GETFD) != -1 || ::open("/dev/null", O_RDWR) == descriptor;
}

}  // namespace

bool setEnvironmentVariable(const std::string& name, const std::string& value) noexcept {
  return ::setenv(name.c_str(), value.c_str(), 1) == 0;
}

std::FILE* divertStandardOutput() noexcept {
  const bool wasOpen = ::fcntl(STDOUT_FILENO, F_GETFD) != -1;
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (!openIfClosed(descriptor)) {
      return nullptr;
    }
  }
  const int data = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const bool diverted = ::dup2(STDERR_FILENO, STDOUT_FILENO) == STDOUT_FILENO;
  std::FILE* stream = data >= 0 && diverted && wasOpen ? ::fdopen(data, "w") : nullptr;
  if (stream == nullptr && data >= 0) {
    ::close(data);
  }
  return stream;
}

}  // namespace LTLib::Platform
