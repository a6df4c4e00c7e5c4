#include "ltlib/foundation/rw_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/foundation/rw_lock_impl.h"
#include "tests/support/latch.h"

namespace {

using LTLib::RWLock;
using LTLib::RWLockImpl;
using State = RWLockImpl::State;
using Counts = RWLockImpl::Counts;
namespace Platform = LTLib::Platform;

void waitFor(RWLockImpl& lock, const Counts& expected) {
  while (!(lock.counts() == expected)) {
    std::this_thread::yield();
  }
}

TEST(RWLock, FollowsItsStates) {
  RWLockImpl lock;
  lock.unlock();
  EXPECT_EQ(lock.counts(), (Counts{0, 0, State::kFree}));
  lock.readLock();
  std::thread([&lock] { lock.readLock(); }).join();
  EXPECT_EQ(lock.counts(), (Counts{2, 0, State::kReading}));
  lock.unlock();
  EXPECT_EQ(lock.counts(), (Counts{1, 0, State::kReading}));
  std::thread([&lock] { lock.unlock(); }).join();
  EXPECT_EQ(lock.counts(), (Counts{0, 0, State::kFree}));
  lock.writeLock();
  EXPECT_EQ(lock.counts(), (Counts{0, 1, State::kWriting}));
  lock.unlock();
  EXPECT_EQ(lock.counts(), (Counts{0, 0, State::kFree}));
}

TEST(RWLock, AReaderPassesAWriterThatWaits) {
  RWLockImpl lock;
  lock.readLock();
  std::thread writer([&lock] {
    lock.writeLock();
    lock.unlock();
  });
  waitFor(lock, {1, 1, State::kReading});
  lock.readLock();
  EXPECT_EQ(lock.counts(), (Counts{2, 1, State::kReading}));
  lock.unlock();
  lock.unlock();
  writer.join();
  EXPECT_EQ(lock.counts(), (Counts{0, 0, State::kFree}));
}

// While a writer holds the lock, readers and writers line up; all readers go first and together.
TEST(RWLock, AWritersEndLetsAllReadersInBeforeAnyWriter) {
  constexpr int kReaders = 3;
  for (int round = 0; round < 20; ++round) {
    RWLockImpl lock;
    lock.writeLock();
    std::atomic<int> readersIn{0};
    std::atomic<int> readersSeenByWriters{0};
    LTLib::Testing::Latch together(kReaders);
    std::vector<std::thread> threads;
    threads.reserve(kReaders + 2);
    for (int i = 0; i < 2; ++i) {
      threads.emplace_back([&] {
        lock.writeLock();
        readersSeenByWriters += readersIn;
        lock.unlock();
      });
    }
    waitFor(lock, {0, 3, State::kWriting});
    for (int i = 0; i < kReaders; ++i) {
      threads.emplace_back([&] {
        lock.readLock();
        ++readersIn;
        together.arrive_and_wait();
        lock.unlock();
      });
    }
    waitFor(lock, {kReaders, 3, State::kWriting});
    EXPECT_EQ(readersIn, 0);
    lock.unlock();
    for (std::thread& thread : threads) {
      thread.join();
    }
    EXPECT_EQ(readersSeenByWriters, 2 * kReaders);
    EXPECT_EQ(lock.counts(), (Counts{0, 0, State::kFree}));
  }
}

TEST(RWLock, GuardsHoldWhatTheyName) {
  RWLock lock;
  long value = 0;
  std::atomic<int> torn{0};
  LTLib::Testing::Latch start(4);
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      for (int round = 0; round < 1000; ++round) {
        if (i == 0) {
          const LTLib::ScopedRWLock write(lock, true);
          ++value;
        } else if (i == 1) {
          const LTLib::ScopedWriteRWLock write(lock);
          ++value;
        } else {
          const LTLib::ScopedReadRWLock outer(lock);
          const long seen = value;
          const LTLib::ScopedRWLock again(lock, false);
          torn += seen != value;
        }
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(value, 2000);
  EXPECT_EQ(torn, 0);
}

int s_eventsLeft = 0;

Platform::Event* makeEventWhileTheyLast(Platform::EventReset reset) noexcept {
  return s_eventsLeft-- > 0 ? Platform::createEvent(reset) : nullptr;
}

TEST(RWLock, ReportsARefusedEvent) {
  for (const int available : {0, 1}) {
    s_eventsLeft = available;
    try {
      const RWLockImpl lock(makeEventWhileTheyLast);
      FAIL() << "made with " << available << " events";
    } catch (const QSException& failure) {
      EXPECT_EQ(failure.Result(), LTLib::kFailure);
    }
  }
  s_eventsLeft = 2;
  EXPECT_NO_THROW(RWLockImpl{makeEventWhileTheyLast});
}

TEST(Event, ManualStaysOpenAndAutomaticLetsOneThrough) {
  Platform::Event* const manual = Platform::createEvent(Platform::EventReset::kManual);
  Platform::Event* const automatic = Platform::createEvent(Platform::EventReset::kAutomatic);
  ASSERT_NE(manual, nullptr);
  ASSERT_NE(automatic, nullptr);
  constexpr int kWaiters = 4;
  LTLib::Testing::Latch arrived(kWaiters);
  LTLib::Testing::Latch passedManual(kWaiters);
  std::atomic<int> passed{0};
  std::vector<std::thread> threads;
  threads.reserve(kWaiters);
  for (int i = 0; i < kWaiters; ++i) {
    threads.emplace_back([&] {
      arrived.count_down();
      Platform::waitForEvent(*manual);
      passedManual.count_down();
      Platform::waitForEvent(*automatic);
      ++passed;
      passed.notify_all();
    });
  }
  arrived.wait();
  Platform::setEvent(*manual);
  passedManual.wait();
  for (int let = 1; let <= kWaiters; ++let) {
    Platform::setEvent(*automatic);
    for (int now = passed; now < let; now = passed) {
      passed.wait(now);
    }
    EXPECT_EQ(passed, let);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  Platform::waitForEvent(*manual);
  Platform::setEvent(*automatic);
  Platform::setEvent(*automatic);
  Platform::waitForEvent(*automatic);
  Platform::destroyEvent(manual);
  Platform::destroyEvent(automatic);
  Platform::destroyEvent(nullptr);
}

}  // namespace
