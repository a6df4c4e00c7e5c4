#include "ltlib/foundation/rw_lock.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "ltlib/foundation/rw_lock_impl.h"
#include "tests/support/threads.h"

namespace {

using LTLib::RWLockImpl;
using State = RWLockImpl::State;
using Counts = RWLockImpl::Counts;

constexpr Counts kFree{0, 0, State::kFree};

void waitFor(const RWLockImpl& lock, const Counts& expected) {
  while (!(lock.counts() == expected)) {
    std::this_thread::yield();
  }
}

TEST(RWLock, ReadersPassAWriterThatWaitsAndAnyThreadMayUnlock) {
  RWLockImpl lock;
  lock.unlock();
  EXPECT_EQ(lock.counts(), kFree);
  lock.readLock();
  std::thread writer([&lock] {
    lock.writeLock();
    EXPECT_EQ(lock.counts(), (Counts{0, 1, State::kWriting}));
    lock.unlock();
  });
  waitFor(lock, {1, 1, State::kReading});
  std::thread([&lock] { lock.readLock(); }).join();
  EXPECT_EQ(lock.counts(), (Counts{2, 1, State::kReading}));
  lock.unlock();
  std::thread([&lock] { lock.unlock(); }).join();
  writer.join();
  EXPECT_EQ(lock.counts(), kFree);
}

// While a writer holds the lock, readers and writers line up; all readers go first and together.
TEST(RWLock, AWritersEndLetsAllReadersInBeforeAnyWriter) {
  constexpr int kReaders = 3;
  constexpr int kWriters = 2;
  RWLockImpl lock;
  for (int round = 0; round < 20; ++round) {
    std::atomic<int> readersIn{0};
    LTLib::Testing::Latch together(kReaders);
    lock.writeLock();
    LTLib::Testing::runTogether(kReaders + kWriters + 1, [&](int thread) {
      if (thread == 0) {
        waitFor(lock, {kReaders, kWriters + 1, State::kWriting});
        EXPECT_EQ(readersIn, 0);
      } else if (thread <= kReaders) {
        lock.readLock();
        ++readersIn;
        together.arrive_and_wait();
      } else {
        lock.writeLock();
        EXPECT_EQ(readersIn, kReaders);
      }
      lock.unlock();
    });
    EXPECT_EQ(lock.counts(), kFree);
  }
}

// The value is no atomic, and whoever writes lets others run meanwhile: a lock that lets two in loses
// rounds.
TEST(RWLock, GuardsHoldWhatTheyName) {
  constexpr int kRounds = 1000;
  LTLib::RWLock lock;
  long value = 0;
  const auto write = [&value] {
    const long seen = value;
    std::this_thread::yield();
    value = seen + 1;
  };
  LTLib::Testing::runTogether(4, [&](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      if (thread == 0) {
        const LTLib::ScopedRWLock guard(lock, true);
        write();
      } else if (thread == 1) {
        const LTLib::ScopedWriteRWLock guard(lock);
        write();
      } else {
        const LTLib::ScopedReadRWLock outer(lock);
        const long seen = value;
        const LTLib::ScopedRWLock inner(lock, false);
        EXPECT_EQ(value, seen);
      }
    }
  });
  EXPECT_EQ(value, 2L * kRounds);
}

// Whoever finds under the lock that nobody else is to come may delete it, though the one that let
// it in is still on its way out.
TEST(RWLock, TheLastOneOutDeletes) {
  constexpr int kThreads = 4;
  struct Shared {
    LTLib::RWLock lock;
    int left = kThreads;
  };
  std::vector<Shared*> all(10000);
  std::generate(all.begin(), all.end(), [] { return new Shared; });
  LTLib::Testing::runTogether(kThreads, [&all](int) {
    for (Shared* const shared : all) {
      shared->lock.readLock();
      shared->lock.unlock();
      shared->lock.writeLock();
      const bool isLast = --shared->left == 0;
      shared->lock.unlock();
      if (isLast) {
        delete shared;
      }
    }
  });
}

}  // namespace
