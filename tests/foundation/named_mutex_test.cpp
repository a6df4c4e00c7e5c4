#include "ltlib/foundation/named_mutex.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>
#include <type_traits>
#include <vector>

#include "ltlib/foundation/kqsresult.h"
#include "tests/support/child_process.h"
#include "tests/support/latch.h"
#include "tests/support/named_mutex_checks.h"
#include "tests/support/named_mutex_name.h"

namespace {

using namespace LTLib::Testing;
using LTLib::NamedMutex;

static_assert(!std::is_copy_constructible_v<NamedMutex>);
static_assert(!std::is_copy_constructible_v<LTLib::NamedMutexImpl>);

// Takes the mutex, tells what the lock threw, and ends as it is told.
const Scenario s_holder("holder", [](const std::vector<std::string>& arguments) {
  NamedMutex mutex(arguments[0].c_str());
  tellParent("held" + lockText(mutex));
  const std::string order = hearParent();
  if (order == "crash") {
    crash();
  } else if (order == "exit") {
    std::exit(0);
  }
  mutex.unlock();
  return 0;
});

void addOne(const std::string& path) {
  long value = 0;
  std::ifstream(path) >> value;
  std::ofstream(path) << value + 1;
}

void countInFile(const std::string& name, const std::string& path, int rounds) {
  NamedMutex mutex(name.c_str());
  for (int i = 0; i < rounds; ++i) {
    mutex.lock();
    addOne(path);
    mutex.unlock();
  }
}

const Scenario s_counter("counter", [](const std::vector<std::string>& arguments) {
  countInFile(arguments[0], arguments[1], std::stoi(arguments[2]));
  return 0;
});

// Each round reads a file, and writes it again: two at once would lose one of their rounds.
TEST(NamedMutex, ExcludesProcessesAndThreads) {
  constexpr int kRounds = 300;
  constexpr int kParties = 4;
  const MutexName name;
  const std::string path = (std::filesystem::temp_directory_path() / name.text()).string();
  {
    const std::vector<std::string> arguments = {name.text(), path, std::to_string(kRounds)};
    ChildProcess first("counter", arguments);
    ChildProcess second("counter", arguments);
    std::thread thread([&] { countInFile(name.text(), path, kRounds); });
    countInFile(name.text(), path, kRounds);
    thread.join();
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
  }
  long total = 0;
  std::ifstream(path) >> total;
  std::filesystem::remove(path);
  EXPECT_EQ(total, long{kRounds} * kParties);
}

// The counter is no atomic: the thread sanitizer sees a lock that lets two threads in.
TEST(NamedMutex, ExcludesThreadsThroughObjectsOfTheirOwn) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 2000;
  const MutexName name;
  long counter = 0;
  LTLib::Testing::Latch start(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      for (int round = 0; round < kRounds; ++round) {
        NamedMutex mutex(name.c_str());
        mutex.lock();
        ++counter;
        mutex.unlock();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(counter, long{kThreads} * kRounds);
}

TEST(NamedMutex, TheOwnerMayLockAgainThroughAnyObject) {
  const MutexName name;
  NamedMutex mutex(name.c_str());
  NamedMutex same(name.c_str());
  bool last = false;
  mutex.lock();
  same.lock();
  mutex.lock();
  std::thread other([&] {
    mutex.unlock();  // does nothing here: this thread owns nothing
    EXPECT_EQ(lockText(mutex), "");
    EXPECT_TRUE(last);
    mutex.unlock();
  });
  mutex.unlock();
  same.unlock();
  last = true;
  same.unlock();
  same.unlock();  // one too many does nothing
  other.join();
}

// The next owner is another process, another thread or the same thread as before.
TEST(NamedMutex, AnOwnersEndIsReportedOnce) {
  for (const char* end : {"exit", "crash", "kill", "thread"}) {
    SCOPED_TRACE(end);
    const MutexName name;
    NamedMutex mutex(name.c_str());
    if (end == std::string("thread")) {
      std::thread([&] { EXPECT_EQ(lockText(mutex), ""); }).join();
    } else {
      ChildProcess child("holder", {name.text()});
      ASSERT_EQ(child.hear(), "held");
      end == std::string("kill") ? child.kill() : child.tell(end);
      child.wait();
    }
    EXPECT_EQ(lockText(mutex), abandonedText(name.text()));
    EXPECT_EQ(lockText(mutex), "") << "the thread is the owner";
    mutex.unlock();
    mutex.unlock();
    std::thread([&] {
      EXPECT_EQ(lockText(mutex), "");
      mutex.unlock();
    }).join();
    ChildProcess next("holder", {name.text()});
    EXPECT_EQ(next.hear(), "held");
  }
}

// One that obtained an abandoned mutex and ends too is an owner like any other.
TEST(NamedMutex, EachOwnersEndIsReportedToTheNext) {
  const MutexName name;
  const NamedMutex kept(name.c_str());  // some systems forget a mutex that nobody has open
  std::string told = "held";
  for (int i = 0; i < 3; ++i) {
    ChildProcess child("holder", {name.text()});
    EXPECT_EQ(child.hear(), told);
    child.tell("crash");
    child.wait();
    told = "held" + abandonedText(name.text());
  }
  ChildProcess orderly("holder", {name.text()});
  EXPECT_EQ(orderly.hear(), told);
  orderly.tell("unlock");
  EXPECT_EQ(orderly.wait(), 0);
  ChildProcess last("holder", {name.text()});
  EXPECT_EQ(last.hear(), "held");
}

TEST(NamedMutex, AWaiterGetsWhatADyingOwnerLeaves) {
  const MutexName name;
  NamedMutex mutex(name.c_str());
  ChildProcess owner("holder", {name.text()});
  ASSERT_EQ(owner.hear(), "held");
  LTLib::Testing::Latch started(2);
  std::vector<std::string> told(2);
  std::vector<std::thread> waiters;
  waiters.reserve(told.size());
  for (std::string& text : told) {
    waiters.emplace_back([&] {
      started.count_down();
      text = lockText(mutex);
      mutex.unlock();
    });
  }
  started.wait();
  owner.kill();
  for (std::thread& waiter : waiters) {
    waiter.join();
  }
  // One of the two hears of it, and only one.
  EXPECT_EQ(told[0] + told[1], abandonedText(name.text()));
}

// The object goes while its thread still owns the mutex, as in a failed clean-up.
TEST(NamedMutex, AThreadOwnsBeyondItsObject) {
  const MutexName name;
  NamedMutex mutex(name.c_str());
  std::thread([&] {
    auto gone = std::make_unique<NamedMutex>(name.c_str());
    gone->lock();
    gone.reset();
    NamedMutex again(name.c_str());
    EXPECT_EQ(lockText(again), "");
    again.unlock();
  }).join();
  EXPECT_EQ(lockText(mutex), abandonedText(name.text()));
  mutex.unlock();
}

TEST(NamedMutex, TextsOfFailures) {
  EXPECT_EQ(constructionText(nullptr), "cannot create named LTLib::Mutex ");
  const MutexName name;
  NamedMutex mutex(name.c_str());
  std::thread([&] { mutex.lock(); }).join();
  try {
    mutex.lock();
    FAIL() << "the mutex was abandoned";
  } catch (const QSException& error) {
    EXPECT_EQ(error.Result(), LTLib::kFailure);
    EXPECT_STREQ(error.File(), "No specific file info");
    EXPECT_EQ(error.Line(), 0);
    EXPECT_STREQ(error.what(), abandonedText(name.text()).c_str());
  }
  mutex.unlock();
}

}  // namespace
