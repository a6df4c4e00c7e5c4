#include "ltlib/foundation/mutex.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "ltlib/foundation/do_once.h"
#include "tests/support/threads.h"

namespace {

using LTLib::kInitialised;
using LTLib::ScopedLock;
using LTLib::Testing::runTogether;

// Nothing that is counted here is atomic: the thread sanitizer sees a missing order.

// Now and then a holder keeps the lock until the others have run out of tries and sleep.
TEST(Mutex, ExcludesOthersUntilAsManyUnlocksAsLocks) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 200000;
  LTLib::Mutex mutex;
  long counter = 0;
  runTogether(kThreads, [&](int) {
    for (int round = 0; round < kRounds; ++round) {
      const ScopedLock outer(mutex);
      const long seen = counter;
      { const ScopedLock inner(mutex); }
      for (volatile int work = round % 50000 == 0 ? 1000000 : 0; work > 0;) {
        work = work - 1;
      }
      counter = seen + 1;
    }
  });
  EXPECT_EQ(counter, long{kThreads} * kRounds);
}

constexpr int kCallers = 10;

std::atomic<int> s_callers;
int s_failuresLeft = 3;
int s_runs = 0;

// Lasts until all callers are on their way, so that most of them have to wait for it.
void initialise() {
  while (s_callers < kCallers) {
    std::this_thread::yield();
  }
  if (s_failuresLeft-- > 0) {
    throw std::runtime_error("attempt");
  }
  ++s_runs;
}

// A failure goes to the caller that ran into it; the others try until one run completes.
TEST(DoOnce, OneRunCompletesAndNobodyGoesOnBefore) {
  static constinit ltDoOnce_t s_once;
  EXPECT_EQ(ltDoOnce(s_once, nullptr), LTLib::kNullArgument);
  std::atomic<int> failed{0};
  runTogether(kCallers, [&failed](int) {
    ++s_callers;
    try {
      EXPECT_EQ(ltDoOnce(s_once, initialise), kInitialised);
      EXPECT_EQ(s_runs, 1);
    } catch (const std::runtime_error&) {
      ++failed;
    }
  });
  EXPECT_EQ(failed, 3);
  EXPECT_EQ(ltDoOnce(s_once, nullptr), kInitialised);
  EXPECT_EQ(s_runs, 1);
}

}  // namespace
