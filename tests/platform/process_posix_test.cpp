#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstdarg>

#include "ltlib/platform/files.h"
#include "ltlib/platform/linux/sha256.h"
#include "ltlib/platform/process.h"
#include "tests/support/forked_child.h"

namespace {

using LTLib::Testing::holdsInForked;

int s_interruptions = 0;

// Ends a call of the system as a signal does that comes while it waits.
bool isInterrupted() {
  errno = EINTR;
  return s_interruptions > 0 && s_interruptions-- > 0;
}

}  // namespace

// These take the place of the C library's in this program.
extern "C" ssize_t read(int descriptor, void* buffer, std::size_t size) {
  return isInterrupted() ? -1 : ::syscall(SYS_read, descriptor, buffer, size);
}

extern "C" int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return isInterrupted() ? -1
                         : static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

namespace {

TEST(InterruptedCalls, AreMadeAgain) {
  using namespace LTLib::Platform;
  FileHandle file;
  char byte = 'x';
  std::size_t taken = 0;
  s_interruptions = 2;
  ASSERT_EQ(openFile("/proc/self/stat", Links::kRefused, file), FileResult::kDone);
  s_interruptions = 2;
  EXPECT_EQ(fileCalls().read(*file, &byte, 1, &taken), FileResult::kDone);
  EXPECT_EQ(taken + static_cast<std::size_t>(s_interruptions), 1u);
}

// Lengths around the ends of blocks and of their room for the length.
TEST(Sha256, KnownDigests) {
  const std::pair<std::string, const char*> cases[] = {
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {std::string(55, 'a'), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
      {std::string(56, 'a'), "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a"},
  };
  for (const auto& [text, told] : cases) {
    std::string digest;
    for (const std::uint8_t byte : LTLib::Platform::sha256(text)) {
      digest += "0123456789abcdef"[byte >> 4];
      digest += "0123456789abcdef"[byte & 15];
    }
    EXPECT_EQ(digest, told) << text.size();
  }
}

bool isMyId() {
  return LTLib::Platform::processId() == static_cast<std::uint32_t>(::getpid());
}

// A fork that no handler hears of is the hard case for a remembered number.
TEST(ProcessId, IsRightInEveryChild) {
  EXPECT_TRUE(isMyId());
  EXPECT_TRUE(holdsInForked([] { return isMyId() && holdsInForked(isMyId); }));
  const auto child = static_cast<pid_t>(::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
  if (child == 0) {
    ::_exit(isMyId() ? 0 : 1);
  }
  EXPECT_TRUE(LTLib::Testing::heldInForked(child));
  EXPECT_TRUE(isMyId());
}

}  // namespace
