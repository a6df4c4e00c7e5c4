// The named mutex among forked processes and signals, and the files behind it.
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "ltlib/platform/linux/lock_file.h"
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

// Which file is in the way, and whose.
std::string obstacle(const MutexName& name) {
  return ": the file " + lockFilePath(name.text()) + " of the user " +
         std::to_string(::geteuid() == 65534 ? 0 : ::geteuid()) + ' ';
}

// Every name is a mutex of its own, which processes share and which is told in full.
TEST(NamedMutexNames, AnyTextIsAName) {
  const MutexName base;
  const std::string big = base.text() + std::string(10000, '/');
  std::vector<std::string> texts = {"", "../" + base.text(), big, big + 'A', big + 'a'};
  for (const char* end : {"", "/", "\n", "\xff", "A", "a"}) {
    texts.push_back(base.text() + end);
  }
  for (const std::string& held : texts) {
    NamedMutex mutex(held.c_str());
    EXPECT_TRUE(holdsInForked([&] { return lockFailure(mutex).empty(); }));
    EXPECT_EQ(lockFailure(mutex), abandoned(held));
    EXPECT_EQ(std::count_if(texts.begin(), texts.end(), isHeld), 1);
    mutex.unlock();
  }
  EXPECT_EQ(constructionFailure(nullptr), cannotCreate(""));
  std::for_each(texts.begin(), texts.end(), forgetMutex);
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

// Holds the mutex and leaves a child of its own behind, which lives until the test lets it go.
const Scenario s_parent("parent", [](const std::vector<std::string>& arguments) {
  NamedMutex mutex(arguments[0].c_str());
  mutex.lock();
  if (arguments[1] == "forked") {
    startForked([] { return hearParent().empty(); });
  } else {
    // Started by a call that runs no fork handlers.
    static_cast<void>(!std::system("exec 3<&0; cat <&3 >/dev/null &"));
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
    void (*plant)(Text path, Text victim);
    int error;
  };
  const Case cases[] = {
      {[](Text path, Text victim) { fs::create_symlink(victim + "-", path); }, ELOOP},
      {[](Text path, Text victim) { fs::create_hard_link(victim, path); }, EPERM},
      {[](Text path, Text) { ::mkfifo(path.c_str(), 0666); }, EPERM},
      {[](Text path, Text) { fs::create_directory(path); }, EISDIR},
  };
  for (const Case& row : cases) {
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
    EXPECT_EQ(constructionFailure(fresh.c_str()).find(cannotCreate(fresh.text()) + obstacle(fresh)),
              0u);
    EXPECT_EQ(readFile(victim), "valuable");
    EXPECT_FALSE(fs::exists(victim + "-"));
    fs::remove(lockFilePath(used.text()));
    fs::remove(lockFilePath(fresh.text()));
    EXPECT_EQ(passFailure(mutex), "") << "the name serves again";
  }
}

// An odd length is the mark of an owner, and what is told once is over, whatever the length was.
TEST(NamedMutexFiles, AFileLeftOverNeverBlocks) {
  for (const std::size_t length : {0u, 1u, 2u, 99u}) {
    SCOPED_TRACE(length);
    const MutexName name;
    std::ofstream(lockFilePath(name.text())) << std::string(length, 'x');
    NamedMutex mutex(name.c_str());
    EXPECT_EQ(passFailure(mutex), length % 2 == 0 ? "" : abandoned(name.text()));
    EXPECT_EQ(passFailure(mutex), "");
    EXPECT_TRUE(holdsInForked([&] { return lockFailure(mutex).empty(); }));
    EXPECT_EQ(passFailure(mutex), abandoned(name.text()));
  }
}

// The number of the descriptor by which this process has the mutex's file open.
int descriptorOf(const std::string& name) {
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (fs::read_symlink(entry.path(), gone) == lockFilePath(name)) {
      return std::stoi(entry.path().filename());
    }
  }
  return -1;
}

// A program closes what it does not know, and a file of its own, locked for others to read along,
// gets the number.
TEST_F(NamedMutexTest, ADescriptorThatBecameSomebodyElsesIsLeftAlone) {
  const TempFolder folder;
  const std::string path = folder.write("file", "valuable");
  for (const bool held : {true, false}) {
    EXPECT_EQ(held ? lockFailure(m_mutex) : "", "");
    const int number = descriptorOf(m_name.text());
    ASSERT_GE(number, 3);
    const int other = ::open(path.c_str(), O_RDWR);
    ASSERT_EQ(::dup2(other, number), number);
    ::close(other);
    ASSERT_EQ(::flock(number, LOCK_SH), 0);
    const auto isUntouched = [&] {
      const int second = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
      const bool shared = ::flock(second, LOCK_SH | LOCK_NB) == 0;
      return ::close(second) == 0 && shared && ::fcntl(number, F_GETFD) == 0 &&
             readFile(path) == "valuable";
    };
    EXPECT_TRUE(holdsInForked(isUntouched));
    m_mutex.unlock();
    EXPECT_TRUE(isUntouched());
    // Who lost its file under a lock never gave that lock up.
    EXPECT_EQ(passFailure(m_mutex), held ? abandoned(m_name.text()) : "");
    EXPECT_TRUE(isUntouched());
    ::close(number);
  }
}

TEST_F(NamedMutexTest, ANumberThatBecameAnotherMutexesIsLeftAlone) {
  const int number = descriptorOf(m_name.text());
  ::close(number);
  const MutexName other;
  NamedMutex second(other.c_str());
  ASSERT_EQ(descriptorOf(other.text()), number);
  EXPECT_EQ(lockFailure(second), "");
  EXPECT_EQ(passFailure(m_mutex), "");
  EXPECT_TRUE(isHeld(other.text()));
  second.unlock();
}

// With a limit of 0 no file may grow: a try ends the process. A daemon may have closed its standard
// streams, too, and writes to them all the same.
TEST_F(NamedMutexTest, ServesWhereNoFileMayGrowAndNoStreamIsOpen) {
  EXPECT_EQ(passFailure(m_mutex), "");
  EXPECT_TRUE(holdsInForked([&] {
    const rlimit none{0, 0};
    const MutexName fresh;
    const bool limited = ::setrlimit(RLIMIT_FSIZE, &none) == 0;
    for (const int standard : {0, 1, 2}) {
      ::close(standard);
    }
    NamedMutex made(fresh.c_str());
    bool passed = (passFailure(made) + lockFailure(m_mutex)).empty();
    // A hostile user makes the file shorter than its owner left it.
    passed = ::truncate(lockFilePath(m_name.text()).c_str(), 0) == 0 && passed;
    m_mutex.unlock();
    passed = (passFailure(m_mutex) + lockFailure(m_mutex)).empty() && passed;
    return limited && passed && ::write(1, "told", 4) < 0 && errno == EBADF;
  }));
  EXPECT_EQ(passFailure(m_mutex), abandoned(m_name.text()));
  EXPECT_EQ(passFailure(m_mutex), "");
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
           constructionFailure(closed.c_str()) ==
               cannotCreate(closed.text()) + obstacle(closed) + "cannot be used: Permission denied";
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

}  // namespace
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

}  // namespace LTLib::Testing
