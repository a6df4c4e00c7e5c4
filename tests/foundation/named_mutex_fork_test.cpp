// The named mutex among forked processes, signals and names of every kind.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <cstdlib>
#include <latch>
#include <memory>
#include <thread>
#include <vector>

#include "ltlib/foundation/named_mutex.h"
#include "ltlib/platform/posix/lock_file.h"
#include "tests/support/child_process.h"
#include "tests/support/forked_child.h"
#include "tests/support/lock_probe.h"
#include "tests/support/named_mutex_checks.h"
#include "tests/support/named_mutex_name.h"

namespace {

using namespace LTLib::Testing;
using LTLib::NamedMutex;
using LTLib::Platform::lockFilePath;

// Every name is a mutex of its own: another thread can take all the others while one is held.
TEST(NamedMutexNames, AnyTextIsANameOfItsOwn) {
  const MutexName base;
  const std::string& id = base.text();
  const std::string big(10000, 'x');
  const std::vector<std::string> texts = {id,
                                          id + "/",
                                          "/" + id,
                                          "../" + id,
                                          id + "\n",
                                          id + "\\",
                                          id + "\xff",
                                          id + "A",
                                          id + "a",
                                          id + " ",
                                          id + big,
                                          id + big + "/",
                                          id + "\n" + big,
                                          big + id,
                                          big + "\n/" + id,
                                          id + std::string(64, 'y')};
  std::vector<std::unique_ptr<NamedMutex>> mutexes;
  mutexes.reserve(texts.size());
  for (const std::string& text : texts) {
    mutexes.push_back(std::make_unique<NamedMutex>(text.c_str()));
  }
  for (std::size_t held = 0; held < texts.size(); ++held) {
    mutexes[held]->lock();
    EXPECT_TRUE(isHeld(texts[held]));
    for (std::size_t other = 0; other < texts.size(); ++other) {
      EXPECT_TRUE(other == held || !isHeld(texts[other])) << held << " and " << other;
    }
    mutexes[held]->unlock();
  }
  for (const std::string& text : texts) {
    ::unlink(lockFilePath(text).c_str());
  }
}

TEST(NamedMutexNames, ALongNameIsSharedAndToldInFull) {
  const MutexName name("a/b\n", std::string(10000, '/'));
  NamedMutex mutex(name.c_str());
  ASSERT_EQ(runForked([&] {
              NamedMutex same(name.c_str());
              same.lock();
              return 7;
            }),
            7);
  EXPECT_EQ(lockText(mutex), abandonedText(name.text()));
  mutex.unlock();
}

TEST(NamedMutexNames, TheEmptyTextIsAName) {
  NamedMutex mutex("");
  NamedMutex same("");
  mutex.lock();
  same.lock();
  same.unlock();
  mutex.unlock();
  ::unlink(lockFilePath("").c_str());
}

TEST(NamedMutexOwner, AloneCanUnlock) {
  const MutexName name;
  NamedMutex mutex(name.c_str());
  mutex.lock();
  std::thread([&] { mutex.unlock(); }).join();
  EXPECT_TRUE(isHeld(name.text()));
  mutex.unlock();
  EXPECT_FALSE(isHeld(name.text()));
  mutex.unlock();
  expectFree(name.text());
}

TEST(NamedMutexFork, AChildOwnsNothingOfItsParents) {
  const MutexName name;
  NamedMutex mutex(name.c_str());
  mutex.lock();
  EXPECT_EQ(runForked([&] {
              mutex.unlock();
              return isHeld(name.text()) ? 0 : 1;
            }),
            0);
  // One that ends in good order runs its handlers and, with its thread, its thread's.
  EXPECT_EQ(runForked([&] {
              std::exit(3);
              return 0;
            }),
            3);
  EXPECT_TRUE(isHeld(name.text()));
  mutex.unlock();
  expectFree(name.text());
}

TEST(NamedMutexFork, AChildWaitsForItsParentAndLeavesItsOwnMark) {
  const MutexName name;
  NamedMutex mutex(name.c_str());
  mutex.lock();
  const pid_t child = startForked([&] { return lockText(mutex).empty() ? 0 : 1; });
  mutex.unlock();
  EXPECT_EQ(waitForForked(child), 0);
  EXPECT_EQ(lockText(mutex), abandonedText(name.text()));
  mutex.unlock();
  expectFree(name.text());
}

// The parent's threads do not exist in the child, so what they own or wait for there is free.
TEST(NamedMutexFork, AChildIsFreeOfOtherThreads) {
  const MutexName name;
  const MutexName waited;
  NamedMutex mutex(name.c_str());
  NamedMutex wanted(waited.c_str());
  wanted.lock();
  std::latch held(1);
  std::latch go(1);
  std::thread owner([&] {
    mutex.lock();
    held.count_down();
    wanted.lock();
    wanted.unlock();
    go.wait();
    mutex.unlock();
  });
  held.wait();
  const pid_t child = startForked([&] {
    const bool clean = lockText(mutex).empty() && lockText(wanted).empty();
    mutex.unlock();
    wanted.unlock();
    return clean ? 0 : 1;
  });
  EXPECT_TRUE(isHeld(name.text()));
  wanted.unlock();
  go.count_down();
  EXPECT_EQ(waitForForked(child), 0);
  owner.join();
  expectFree(name.text());
  expectFree(waited.text());
}

// Holds the mutex, leaves a child of its own behind and dies.
const Scenario s_parent("parent", [](const std::vector<std::string>& arguments) -> int {
  NamedMutex mutex(arguments[0].c_str());
  mutex.lock();
  if (arguments[1] == "forked") {
    startForked([] { return hearParent().empty() ? 0 : 1; });
  } else {
    // Started by a call that runs no fork handlers; lives until the test closes its end.
    static_cast<void>(!std::system("cat <&3 >/dev/null &"));
  }
  tellParent("held");
  static_cast<void>(hearParent());
  crash();
});

TEST(NamedMutexFork, AChildThatLivesOnDoesNotKeepADeadParentsLock) {
  for (const char* kind : {"forked", "started"}) {
    SCOPED_TRACE(kind);
    const MutexName name;
    ChildProcess parent("parent", {name.text(), kind});
    ASSERT_EQ(parent.hear(), "held");
    NamedMutex mutex(name.c_str());
    parent.kill();
    EXPECT_EQ(lockText(mutex), abandonedText(name.text()));
    mutex.unlock();
  }
}

TEST(NamedMutexFork, ForksCrossingWithLocksLeaveNothingBehind) {
  constexpr int kForks = 50;
  const MutexName name;
  std::atomic<bool> stop{false};
  std::thread locker([&] {
    while (!stop) {
      NamedMutex mutex(name.c_str());
      mutex.lock();
      mutex.unlock();
    }
  });
  for (int i = 0; i < kForks; ++i) {
    EXPECT_EQ(runForked([&] {
                NamedMutex mutex(name.c_str());
                const bool clean = lockText(mutex).empty();
                mutex.unlock();
                return clean ? 0 : 1;
              }),
              0);
  }
  stop = true;
  locker.join();
}

// Each signal interrupts the wait for the other process.
TEST(NamedMutexSignals, InterruptNoWait) {
  constexpr int kSignals = 5000;
  struct sigaction action {};
  action.sa_handler = [](int) {};
  struct sigaction before {};
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);

  const MutexName name;
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  const pid_t owner = startForked([&] {
    ::close(pipe[1]);
    NamedMutex mutex(name.c_str());
    mutex.lock();
    char byte = 0;
    static_cast<void>(::read(pipe[0], &byte, 1));
    mutex.unlock();
    return 0;
  });
  while (::access(lockFilePath(name.text()).c_str(), F_OK) != 0 || !isHeld(name.text())) {
    std::this_thread::yield();
  }
  NamedMutex mutex(name.c_str());
  std::latch started(1);
  std::thread waiter([&] {
    started.count_down();
    EXPECT_EQ(lockText(mutex), "");
    mutex.unlock();
  });
  started.wait();
  for (int sent = 0; sent < kSignals; ++sent) {
    EXPECT_EQ(::pthread_kill(waiter.native_handle(), SIGUSR1), 0);
    std::this_thread::yield();
  }
  ::close(pipe[1]);
  waiter.join();
  ::close(pipe[0]);
  EXPECT_EQ(waitForForked(owner), 0);
  ::sigaction(SIGUSR1, &before, nullptr);
}

}  // namespace
