// The named mutex among forked processes and signals, and the files behind it.
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "ltlib/platform/posix/lock_file.h"
#include "tests/foundation/named_mutex_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/forked_child.h"
#include "tests/support/threads.h"

namespace LTLib::Testing {

void forgetMutex(const std::string& name) {
  ::unlink(Platform::lockFilePath(name).c_str());
}

namespace {

namespace fs = std::filesystem;
using Platform::lockFilePath;
using Text = const std::string&;

// Whether somebody holds the mutex of that name, found out without waiting.
bool isHeld(const std::string& name) {
  const int descriptor = ::open(lockFilePath(name).c_str(), O_RDWR | O_CLOEXEC);
  const bool held = ::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  ::close(descriptor);
  return held;
}

// Every name is a mutex of its own, which processes share and which is told in full.
TEST(NamedMutexNames, AnyTextIsAName) {
  const MutexName base;
  const std::string big(300, 'x');
  std::vector<std::string> texts = {"/" + base.text(), "../" + base.text(),
                                    std::string(10000, '/') + base.text()};
  for (const char* end : {"", "/", "\n", "\\", "\xff", "A", "a", " "}) {
    texts.push_back(base.text() + end);
    texts.push_back(base.text() + end + big);
  }
  std::vector<std::unique_ptr<NamedMutex>> mutexes;
  for (const std::string& text : texts) {
    mutexes.push_back(std::make_unique<NamedMutex>(text.c_str()));
  }
  for (std::size_t held = 0; held < texts.size(); ++held) {
    EXPECT_TRUE(holdsInForked([&] { return lockFailure(*mutexes[held]).empty(); }));
    EXPECT_EQ(lockFailure(*mutexes[held]), abandoned(texts[held]));
    for (std::size_t other = 0; other < texts.size(); ++other) {
      EXPECT_EQ(isHeld(texts[other]), other == held) << held << " and " << other;
    }
    mutexes[held]->unlock();
  }
  EXPECT_EQ(constructionFailure(""), "");
  EXPECT_EQ(constructionFailure(nullptr), cannotCreate(""));
  texts.push_back("");
  for (const std::string& text : texts) {
    forgetMutex(text);
  }
}

TEST_F(NamedMutexTest, IsHeldUntilItsOwnersLastUnlock) {
  NamedMutex same(m_name.c_str());
  m_mutex.lock();
  same.lock();
  std::thread([&] { m_mutex.unlock(); }).join();
  EXPECT_TRUE(isHeld(m_name.text()));
  m_mutex.unlock();
  EXPECT_TRUE(isHeld(m_name.text()));
  same.unlock();
  EXPECT_FALSE(isHeld(m_name.text()));
  same.unlock();
  EXPECT_EQ(passFailure(m_mutex), "");

  const MutexName other;
  NamedMutex(other.c_str()).lock();
  EXPECT_TRUE(isHeld(other.text())) << "beyond the only object";
  NamedMutex(other.c_str()).unlock();
  EXPECT_FALSE(isHeld(other.text()));
}

TEST_F(NamedMutexTest, AForkedChildOwnsNothingOfItsParentsAndWaits) {
  m_mutex.lock();
  EXPECT_TRUE(holdsInForked([&] {
    m_mutex.unlock();
    std::exit(isHeld(m_name.text()) ? 0 : 1);
    return false;
  }));
  EXPECT_TRUE(isHeld(m_name.text()));
  const pid_t child = startForked([&] { return lockFailure(m_mutex).empty(); });
  m_mutex.unlock();
  EXPECT_TRUE(heldInForked(child));
  EXPECT_EQ(passFailure(m_mutex), abandoned(m_name.text()));
  EXPECT_EQ(passFailure(m_mutex), "");
}

// The parent's threads do not exist in the child, so what they own or wait for there is free.
TEST_F(NamedMutexTest, AForkedChildIsFreeOfOtherThreads) {
  const MutexName waited;
  NamedMutex wanted(waited.c_str());
  wanted.lock();
  Latch held(1);
  std::thread owner([&] {
    m_mutex.lock();
    held.count_down();
    EXPECT_EQ(passFailure(wanted), "");
    m_mutex.unlock();
  });
  held.wait();
  const pid_t child =
      startForked([&] { return (passFailure(m_mutex) + passFailure(wanted)).empty(); });
  EXPECT_TRUE(isHeld(m_name.text()));
  wanted.unlock();
  owner.join();
  EXPECT_TRUE(heldInForked(child));
  EXPECT_EQ(passFailure(m_mutex), "");
}

// Holds the mutex and leaves a child of its own behind, which lives until the test lets it go.
const Scenario s_parent("parent", [](const std::vector<std::string>& arguments) {
  NamedMutex mutex(arguments[0].c_str());
  mutex.lock();
  if (arguments[1] == "forked") {
    startForked([] { return hearParent().empty(); });
  } else {
    // Started by a call that runs no fork handlers.
    static_cast<void>(!std::system("cat <&3 >/dev/null &"));
  }
  tellParent("held");
  return hearParent().empty() ? 0 : 1;
});

TEST(NamedMutexFork, AChildThatLivesOnDoesNotKeepADeadParentsLock) {
  for (const char* kind : {"forked", "started"}) {
    const MutexName name;
    ChildProcess parent("parent", {name.text(), kind});
    ASSERT_EQ(parent.hear(), "held");
    NamedMutex mutex(name.c_str());
    parent.kill();
    EXPECT_EQ(passFailure(mutex), abandoned(name.text())) << kind;
  }
}

TEST_F(NamedMutexTest, ForksCrossingWithLocksLeaveNothingBehind) {
  const auto isFree = [&] {
    NamedMutex mutex(m_name.c_str());
    return passFailure(mutex).empty();
  };
  std::atomic<bool> stop{false};
  std::thread locker([&] {
    while (!stop) {
      EXPECT_TRUE(isFree());
    }
  });
  for (int forks = 0; forks < 50; ++forks) {
    EXPECT_TRUE(holdsInForked(isFree));
  }
  stop = true;
  locker.join();
}

TEST_F(NamedMutexTest, SignalsInterruptNoWait) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  ASSERT_EQ(::sigaction(SIGUSR1, &action, nullptr), 0);
  ChildProcess owner("holder", {m_name.text()});
  ASSERT_EQ(owner.hear(), "held");
  Latch started(1);
  std::thread waiter([&] {
    started.count_down();
    EXPECT_EQ(passFailure(m_mutex), "");
  });
  started.wait();
  for (int sent = 0; sent < 5000; ++sent) {
    EXPECT_EQ(::pthread_kill(waiter.native_handle(), SIGUSR1), 0);
    std::this_thread::yield();
  }
  owner.tell("unlock");
  waiter.join();
}

// What a hostile user can put in the way of a name, under an object in use and on opening.
TEST(NamedMutexFiles, NothingPlantedIsFollowedOrWaitedFor) {
  struct Case {
    const char* label;
    void (*plant)(Text path, Text victim);
    int error;
  };
  const Case cases[] = {
      {"link to a file", [](Text path, Text victim) { fs::create_symlink(victim, path); }, ELOOP},
      {"link to nothing", [](Text path, Text victim) { fs::create_symlink(victim + "-", path); },
       ELOOP},
      {"second name", [](Text path, Text victim) { fs::create_hard_link(victim, path); }, EPERM},
      {"folder", [](Text path, Text) { fs::create_directory(path); }, EISDIR},
      {"pipe", [](Text path, Text) { ::mkfifo(path.c_str(), 0666); }, EPERM},
      {"socket", [](Text path, Text) { ::mknod(path.c_str(), S_IFSOCK, 0); }, ENXIO},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.label);
    const MutexName used;
    const MutexName fresh;
    const MutexName beside;  // in the same file system, for a second name
    const std::string victim = lockFilePath(beside.text());
    std::ofstream(victim) << "valuable";
    NamedMutex mutex(used.c_str());
    forgetMutex(used.text());
    row.plant(lockFilePath(used.text()), victim);
    row.plant(lockFilePath(fresh.text()), victim);
    EXPECT_EQ(lockFailure(mutex), "cannot lock LTLib::NamedMutex " + used.text() +
                                      ", error: " + std::to_string(row.error));
    EXPECT_EQ(constructionFailure(fresh.c_str()), cannotCreate(fresh.text()));
    EXPECT_EQ(readFile(victim), "valuable");
    EXPECT_FALSE(fs::exists(victim + "-"));
    fs::remove(lockFilePath(used.text()));
    fs::remove(lockFilePath(fresh.text()));
    EXPECT_EQ(passFailure(mutex), "") << "the name serves again";
  }
}

TEST_F(NamedMutexTest, AFileLeftOverNeverBlocks) {
  std::ofstream(lockFilePath(m_name.text())) << "much that nobody asked for";
  EXPECT_EQ(passFailure(m_mutex), abandoned(m_name.text()));
  EXPECT_EQ(readFile(lockFilePath(m_name.text())), "");
}

TEST(NamedMutexFiles, UsersShareAMutexWhoeverMadeIt) {
  const MutexName ours;
  const mode_t before = ::umask(077);
  NamedMutex mutex(ours.c_str());
  ::umask(before);
  EXPECT_EQ(fs::status(lockFilePath(ours.text())).permissions(), fs::perms(0666));
  if (::geteuid() != 0) {
    GTEST_SKIP() << "needs root, to become a second user";
  }
  const MutexName theirs;
  const MutexName closed;
  std::ofstream(lockFilePath(closed.text())).close();
  fs::permissions(lockFilePath(closed.text()), fs::perms(0600));
  EXPECT_TRUE(holdsInForked([&] {
    ::umask(077);
    const bool isSecondUser = ::setuid(65534) == 0;
    NamedMutex made(theirs.c_str());
    return isSecondUser && (lockFailure(made) + lockFailure(mutex)).empty() &&
           constructionFailure(closed.c_str()) == cannotCreate(closed.text());
  }));
  EXPECT_EQ(passFailure(mutex), abandoned(ours.text()));
  NamedMutex second(theirs.c_str());
  EXPECT_EQ(passFailure(second), abandoned(theirs.text()));
}

// A cleaner removes the file: whoever locks from then on meets in a new one.
// Right whether the child waits already by then or comes later.
TEST_F(NamedMutexTest, ARemovedFileIsMadeAnewAndWaitersMoveOnToIt) {
  m_mutex.lock();
  const pid_t waiter =
      startForked([&] { return lockFailure(m_mutex).empty() && isHeld(m_name.text()); });
  forgetMutex(m_name.text());
  m_mutex.unlock();
  EXPECT_TRUE(heldInForked(waiter));
  EXPECT_EQ(passFailure(m_mutex), abandoned(m_name.text()));
  forgetMutex(m_name.text());
  EXPECT_EQ(passFailure(m_mutex), "");
}

// Gives this process a view of the file system of its own, with an empty folder at `path`.
bool hideFolder(const char* path) {
  return ::unshare(CLONE_NEWNS) == 0 &&
         ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("none", path, "tmpfs", 0, nullptr) == 0;
}

// Without /dev/shm the locks lie in /tmp; without /proc a file is made under its name at once.
TEST(NamedMutexFiles, NeedNeitherMemoryFolderNorProc) {
  const std::pair<const char*, const char*> cases[] = {{"/dev", "/tmp/ltlib-"},
                                                       {"/proc", "/dev/shm/ltlib-"}};
  for (const auto& [hidden, folder] : cases) {
    if (!holdsInForked([hidden = hidden] { return hideFolder(hidden); })) {
      GTEST_SKIP() << "needs the right to mount";
    }
    EXPECT_TRUE(holdsInForked([hidden = hidden, folder = folder] {
      hideFolder(hidden);
      ::umask(077);
      const MutexName name;
      NamedMutex mutex(name.c_str());
      const std::string path = lockFilePath(name.text());
      return path.rfind(folder, 0) == 0 && lockFailure(mutex).empty() && isHeld(name.text()) &&
             fs::status(path).permissions() == fs::perms(0666);
    })) << hidden;
  }
}

}  // namespace
}  // namespace LTLib::Testing
