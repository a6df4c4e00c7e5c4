#include <gtest/gtest.h>
#include <signal.h>
#include <sys/syscall.h>

#include "ltlib/platform/linux/sha256.h"
#include "ltlib/platform/process.h"
#include "tests/support/forked_child.h"

namespace {

using LTLib::Testing::holdsInForked;

// Lengths around the ends of blocks and of their room for the length.
TEST(Sha256, KnownDigests) {
  const std::pair<std::string, const char*> cases[] = {
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {std::string(55, 'a'), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
      {std::string(56, 'a'), "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a"},
      {std::string(64, 'a'), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
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
