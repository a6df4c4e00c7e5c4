#include <gtest/gtest.h>

#include "ltlib/platform/tool_process.h"

namespace {

using namespace LTLib::Platform;

TEST(RunChild, TellsWhyAProgramDoesNotStart) {
  const ChildOutcome outcome = runChild("no such program", {}, std::chrono::hours(1));
  EXPECT_EQ(outcome.end, ChildEnd::kNotStarted);
  EXPECT_EQ(outcome.reason, "No such file or directory");
}

}  // namespace
