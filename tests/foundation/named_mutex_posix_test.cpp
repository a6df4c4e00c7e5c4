#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <latch>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

#include "ltlib/foundation/named_mutex.h"
#include "ltlib/platform/posix/lock_file.h"
#include "tests/support/child_process.h"
#include "tests/support/forked_child.h"
#include "tests/support/named_mutex_checks.h"
#include "tests/support/named_mutex_name.h"

namespace {

using namespace LTLib::Testing;
using LTLib::NamedMutex;
using LTLib::Platform::lockFilePath;

constexpr uid_t kSecondUser = 65534;

// Whether somebody holds the lock of that name, found out without waiting.
bool isHeld(const std::string& name) {
  const int descriptor = ::open(lockFilePath(name).c_str(), O_RDWR | O_CLOEXEC);
  const bool taken = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
  const int error = errno;
  ::close(descriptor);
  return !taken && error == EWOULDBLOCK;
}

void expectFree(const std::string& name) {
  EXPECT_FALSE(isHeld(name));
  NamedMutex mutex(name.c_str());
  EXPECT_EQ(lockText(mutex), "");
  mutex.unlock();
}

std::string contentOf(const std::string& path) {
  std::stringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

void writeFile(const std::string& path, const std::string& text) {
  std::ofstream(path) << text;
}

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

void plantSocket(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  EXPECT_EQ(::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ::close(descriptor);
}

// What a hostile user can put in the way of a name, on opening and under an object in use.
TEST(NamedMutexHostile, NothingPlantedIsFollowedOrWaitedFor) {
  struct Case {
    const char* label;
    void (*plant)(const std::string& path, const std::string& victim);
    int error;
  };
  const Case cases[] = {
      {"link to a file",
       [](const std::string& path, const std::string& victim) {
         std::filesystem::create_symlink(victim, path);
       },
       ELOOP},
      {"link to nothing",
       [](const std::string& path, const std::string& victim) {
         std::filesystem::create_symlink(victim + "-absent", path);
       },
       ELOOP},
      {"second name of a file",
       [](const std::string& path, const std::string& victim) {
         std::filesystem::create_hard_link(victim, path);
       },
       EPERM},
      {"folder",
       [](const std::string& path, const std::string&) { std::filesystem::create_directory(path); },
       EISDIR},
      {"pipe",
       [](const std::string& path, const std::string&) {
         EXPECT_EQ(::mkfifo(path.c_str(), 0666), 0);
       },
       EPERM},
      {"socket", [](const std::string& path, const std::string&) { plantSocket(path); }, ENXIO},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.label);
    const MutexName name("p");
    const std::string path = lockFilePath(name.text());
    // Beside the lock, since a second name must lie in the same file system.
    const std::string victim = path + "-victim";
    writeFile(victim, "valuable");

    NamedMutex inUse(name.c_str());
    ::unlink(path.c_str());
    row.plant(path, victim);
    EXPECT_EQ(lockText(inUse), "cannot lock LTLib::NamedMutex " + name.text() +
                                   ", error: " + std::to_string(row.error));
    // The object in use is the process's access to the name; a new one meets what was planted.
    EXPECT_EQ(runForked([&] {
                const MutexName copy("q");
                row.plant(lockFilePath(copy.text()), victim);
                const std::string told = constructionText(copy.c_str());
                std::filesystem::remove(lockFilePath(copy.text()));
                return told == "cannot create named LTLib::Mutex " + copy.text() ? 0 : 1;
              }),
              0);
    EXPECT_EQ(contentOf(victim), "valuable");
    EXPECT_FALSE(std::filesystem::exists(victim + "-absent"));
    std::filesystem::remove(path);
    std::filesystem::remove(victim);
    EXPECT_EQ(lockText(inUse), "") << "the name serves again";
    inUse.unlock();
  }
}

TEST(NamedMutexHostile, AFileLeftOverNeverBlocks) {
  for (const char* content : {"x", "much that nobody asked for"}) {
    const MutexName name;
    const std::string path = lockFilePath(name.text());
    writeFile(path, content);
    NamedMutex mutex(name.c_str());
    EXPECT_EQ(lockText(mutex), abandonedText(name.text()));
    mutex.unlock();
    EXPECT_EQ(contentOf(path), "");
    expectFree(name.text());
  }
}

TEST(NamedMutexHostile, TheFileServesEveryUser) {
  const MutexName name;
  const mode_t before = ::umask(077);
  const NamedMutex mutex(name.c_str());
  ::umask(before);
  struct stat status {};
  ASSERT_EQ(::stat(lockFilePath(name.text()).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0666u);
  EXPECT_EQ(status.st_nlink, 1u);
}

class NamedMutexTwoUsers : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) {
      GTEST_SKIP() << "needs root, to become a second user";
    }
  }
};

int asSecondUser(int (*function)(const std::string&), const std::string& name) {
  return runForked([&] { return ::setuid(kSecondUser) != 0 ? 9 : function(name); });
}

int takeAndEnd(const std::string& name) {
  ::umask(077);
  NamedMutex mutex(name.c_str());
  return lockText(mutex).empty() ? 0 : 1;
}

TEST_F(NamedMutexTwoUsers, ShareAMutexWhoeverMadeIt) {
  const MutexName ours;
  NamedMutex mutex(ours.c_str());
  EXPECT_EQ(asSecondUser(takeAndEnd, ours.text()), 0);
  EXPECT_EQ(lockText(mutex), abandonedText(ours.text()));
  mutex.unlock();

  const MutexName theirs;
  EXPECT_EQ(asSecondUser(takeAndEnd, theirs.text()), 0);
  NamedMutex second(theirs.c_str());
  EXPECT_EQ(lockText(second), abandonedText(theirs.text()));
  EXPECT_EQ(
      asSecondUser([](const std::string& name) { return isHeld(name) ? 0 : 1; }, theirs.text()), 0);
  second.unlock();
}

TEST_F(NamedMutexTwoUsers, AFileThatMayNotBeOpenedFailsAndDoesNotWait) {
  const MutexName name;
  const std::string path = lockFilePath(name.text());
  writeFile(path, "");
  ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(asSecondUser(
                [](const std::string& text) {
                  const std::string told = constructionText(text.c_str());
                  return told == "cannot create named LTLib::Mutex " + text ? 0 : 1;
                },
                name.text()),
            0);
}

// A cleaner removes the file: whoever locks from then on meets in a new one.
TEST(NamedMutexCleaner, ARemovedFileIsMadeAnew) {
  const MutexName name;
  const std::string path = lockFilePath(name.text());
  NamedMutex mutex(name.c_str());
  ::unlink(path.c_str());
  EXPECT_EQ(lockText(mutex), "");
  EXPECT_TRUE(isHeld(name.text()));
  ::unlink(path.c_str());
  mutex.unlock();
  EXPECT_EQ(lockText(mutex), "");
  EXPECT_TRUE(isHeld(name.text()));
  mutex.unlock();
  expectFree(name.text());
}

// Right whether the child waits already when the file goes or comes later.
TEST(NamedMutexCleaner, AWaiterMovesOnToTheNewFile) {
  const MutexName name;
  NamedMutex mutex(name.c_str());
  mutex.lock();
  const pid_t waiter = startForked([&] {
    const bool clean = lockText(mutex).empty();
    return clean && isHeld(name.text()) ? 0 : 1;
  });
  ::unlink(lockFilePath(name.text()).c_str());
  mutex.unlock();
  EXPECT_EQ(waitForForked(waiter), 0);
  EXPECT_EQ(lockText(mutex), abandonedText(name.text()));
  mutex.unlock();
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
