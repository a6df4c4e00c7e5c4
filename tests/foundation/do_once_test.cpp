#include "ltlib/foundation/do_once.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/latch.h"

namespace {

using LTLib::kInitialised;
using LTLib::kNullArgument;

TEST(DoOnce, ANullInitialiserLeavesTheRecordAlone) {
  static constinit ltDoOnce_t s_once;
  static int s_runs = 0;
  EXPECT_EQ(ltDoOnce(s_once, nullptr), kNullArgument);
  EXPECT_EQ(s_once.entered.load(), -1);
  EXPECT_EQ(s_once.done.load(), 0);
  EXPECT_EQ(ltDoOnce(s_once, [] { ++s_runs; }), kInitialised);
  EXPECT_EQ(ltDoOnce(s_once, [] { ++s_runs; }), kInitialised);
  EXPECT_EQ(ltDoOnce(s_once, nullptr), kInitialised);
  EXPECT_EQ(s_runs, 1);
  EXPECT_EQ(s_once.entered.load(), 0);
}

// What the initialiser writes is no atomic: the thread sanitizer sees a missing order.
TEST(DoOnce, NobodyGoesOnBeforeTheOneRunHasEnded) {
  constexpr int kThreads = 10;
  static constinit ltDoOnce_t s_once;
  static int s_runs = 0;
  static std::atomic<int> s_callers{0};
  LTLib::Testing::Latch start(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      ++s_callers;
      // The run lasts until all are on their way, so that most of them have to wait for it.
      const QSResult result = ltDoOnce(s_once, [] {
        while (s_callers < kThreads) {
          std::this_thread::yield();
        }
        ++s_runs;
      });
      EXPECT_EQ(result, kInitialised);
      EXPECT_EQ(s_runs, 1);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

TEST(DoOnce, AnInitialiserThatThrowsLeavesTheRecordUntouched) {
  static constinit ltDoOnce_t s_once;
  static int s_runs = 0;
  EXPECT_THROW(ltDoOnce(s_once, [] { throw std::runtime_error("first"); }), std::runtime_error);
  EXPECT_EQ(s_once.entered.load(), -1);
  EXPECT_EQ(s_once.done.load(), 0);
  EXPECT_EQ(ltDoOnce(s_once, [] { ++s_runs; }), kInitialised);
  EXPECT_EQ(s_runs, 1);
}

// Each failure goes to the caller that ran into it; the others try until one run completes.
TEST(DoOnce, WaitersTakeOverAfterAFailure) {
  constexpr int kThreads = 6;
  constexpr int kFailures = 3;
  static constinit ltDoOnce_t s_once;
  static int s_attempts = 0;
  static std::atomic<int> s_callers{0};
  std::atomic<int> failed{0};
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      ++s_callers;
      try {
        const QSResult result = ltDoOnce(s_once, [] {
          while (s_callers < kThreads) {
            std::this_thread::yield();
          }
          if (++s_attempts <= kFailures) {
            throw std::runtime_error("attempt");
          }
        });
        EXPECT_EQ(result, kInitialised);
        EXPECT_EQ(s_attempts, kFailures + 1);
      } catch (const std::runtime_error&) {
        ++failed;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(failed.load(), kFailures);
  EXPECT_EQ(s_attempts, kFailures + 1);
}

}  // namespace
