#include <gtest/gtest.h>
#include <signal.h>
#include <sys/syscall.h>

#include <string>

#include "ltlib/foundation/uid.h"
#include "ltlib/platform/posix/sha256.h"
#include "ltlib/platform/process.h"
#include "tests/support/forked_child.h"

namespace {

using LTLib::Platform::processId;
using LTLib::Testing::runForked;
using LTLib::Testing::waitForForked;

std::string hexOfDigest(const std::string& text) {
  std::string hex;
  for (const std::uint8_t byte : LTLib::Platform::sha256(text)) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    hex += digits;
  }
  return hex;
}

// Lengths around the ends of blocks and of their room for the length.
TEST(Sha256, KnownDigests) {
  struct Case {
    std::string text;
    const char* digest;
  };
  const Case cases[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {std::string(55, 'a'), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
      {std::string(56, 'a'), "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a"},
      {std::string(63, 'a'), "7d3e74a05d7db15bce4ad9ec0658ea98e3f06eeecf16b4c6fff2da457ddc2f34"},
      {std::string(64, 'a'), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
      {std::string(65, 'a'), "635361c48bb9eab14198e76ea8ab7f1a41685d6ad62aa9146d301d4f17eb0ae0"},
      {std::string(119, 'a'), "31eba51c313a5c08226adf18d4a359cfdfd8d2e816b13f4af952f7ea6584dcfb"},
      {std::string(120, 'a'), "2f3d335432c70b580af0e8e1b3674a7c020d683aa5f73aaaedfdc55af904c21c"},
      {std::string(1000, 'a'), "41edece42d63e8d9bf515a9ba6932e1c20cbc9f5a5d134645adb5db1b9737ea3"},
  };
  for (const Case& row : cases) {
    EXPECT_EQ(hexOfDigest(row.text), row.digest) << row.text.size();
  }
}

bool isMyId() {
  return processId() == static_cast<std::uint32_t>(::getpid());
}

// A fork that no handler hears of is the hard case for a remembered number.
TEST(ProcessId, IsRightInEveryChild) {
  EXPECT_TRUE(isMyId());
  EXPECT_EQ(runForked([] { return isMyId() && runForked([] { return isMyId() ? 5 : 6; }) == 5; }),
            1);
  const auto child = static_cast<pid_t>(::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
  if (child == 0) {
    ::_exit(isMyId() ? 0 : 1);
  }
  EXPECT_EQ(waitForForked(child), 0);
  EXPECT_TRUE(isMyId());
}

// Parent and child go on from the same engine.
TEST(ProcessId, SeparatesTheIdentifiersOfAChild) {
  static_cast<void>(UID::Generate());
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  ASSERT_EQ(runForked([&] {
              unsigned char bytes[16];
              UID::Generate().to16bytes(bytes);
              return ::write(pipe[1], bytes, sizeof bytes) == sizeof bytes ? 0 : 1;
            }),
            0);
  unsigned char bytes[16];
  ASSERT_EQ(::read(pipe[0], bytes, sizeof bytes), static_cast<ssize_t>(sizeof bytes));
  UID childs;
  childs.from16bytes(bytes);
  EXPECT_NE(UID::Generate().Compare(childs), 0);
  ::close(pipe[0]);
  ::close(pipe[1]);
}

}  // namespace
