#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "ltlib/foundation/named_mutex.h"
#include "ltlib/platform/posix/lock_file.h"
#include "tests/support/lock_probe.h"
#include "tests/support/named_mutex_checks.h"

namespace LTLib::Testing {

bool isHeld(const std::string& name) {
  const int descriptor = ::open(Platform::lockFilePath(name).c_str(), O_RDWR | O_CLOEXEC);
  const bool taken = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
  const int error = errno;
  ::close(descriptor);
  return !taken && error == EWOULDBLOCK;
}

void expectFree(const std::string& name) {
  EXPECT_FALSE(isHeld(name));
  NamedMutex mutex(name.c_str());
  EXPECT_EQ(lockText(mutex), "");
  mutex.unlock();
}

}  // namespace LTLib::Testing
