#include "ltlib/foundation/mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/support/latch.h"

namespace {

using LTLib::Mutex;
using LTLib::ScopedLock;

// The counter is no atomic: the thread sanitizer sees a lock that lets two threads in.
TEST(Mutex, ExcludesOtherThreads) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 20000;
  Mutex mutex;
  long counter = 0;
  LTLib::Testing::Latch start(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      for (int round = 0; round < kRounds; ++round) {
        const ScopedLock outer(mutex);
        const ScopedLock inner(mutex);
        ++counter;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(counter, long{kThreads} * kRounds);
}

TEST(Mutex, LetsAnotherInOnlyAfterAsManyUnlocksAsLocks) {
  constexpr int kDepth = 3;
  Mutex mutex;
  std::atomic<int> left{kDepth};
  for (int i = 0; i < kDepth; ++i) {
    mutex.lock();
  }
  LTLib::Testing::Latch started(1);
  std::thread other([&] {
    started.count_down();
    const ScopedLock hold(mutex);
    EXPECT_EQ(left.load(), 0);
  });
  started.wait();
  for (int i = 0; i < kDepth; ++i) {
    std::this_thread::yield();
    --left;
    mutex.unlock();
  }
  other.join();
}

// The waiters have run out of tries and sleep by the time the holder has done its work.
TEST(Mutex, WakesEverySleeper) {
  constexpr int kThreads = 8;
  Mutex mutex;
  LTLib::Testing::Latch started(kThreads);
  int entered = 0;
  mutex.lock();
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      started.count_down();
      const ScopedLock hold(mutex);
      ++entered;
    });
  }
  started.wait();
  volatile unsigned long work = 0;
  for (int i = 0; i < 20000000; ++i) {
    work = work + 1;
  }
  EXPECT_EQ(entered, 0);
  mutex.unlock();
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(entered, kThreads);
}

TEST(ScopedLock, ReleasesWhenAnExceptionPasses) {
  Mutex mutex;
  try {
    const ScopedLock hold(mutex);
    throw 1;
  } catch (int) {
  }
  std::thread([&] { const ScopedLock hold(mutex); }).join();
}

}  // namespace
