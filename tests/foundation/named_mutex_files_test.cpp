// The files behind named mutexes: planted by others, left over, removed, of a second user.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "ltlib/foundation/named_mutex.h"
#include "ltlib/platform/posix/lock_file.h"
#include "tests/support/forked_child.h"
#include "tests/support/lock_probe.h"
#include "tests/support/named_mutex_checks.h"
#include "tests/support/named_mutex_name.h"

namespace {

using namespace LTLib::Testing;
using LTLib::NamedMutex;
using LTLib::Platform::lockFilePath;

constexpr uid_t kSecondUser = 65534;

std::string contentOf(const std::string& path) {
  std::stringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

void writeFile(const std::string& path, const std::string& text) {
  std::ofstream(path) << text;
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

// Gives this process a view of the file system of its own, with an empty folder at `path`.
bool hideFolder(const char* path) {
  return ::unshare(CLONE_NEWNS) == 0 &&
         ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("none", path, "tmpfs", 0, nullptr) == 0;
}

// Without /dev/shm the locks lie in /tmp; without /proc a file is made under its name at once.
TEST(NamedMutexSystem, NeedsNeitherMemoryFolderNorProc) {
  constexpr int kNoRights = 9;
  struct Case {
    const char *hidden, *folder;
  };
  const Case cases[] = {{"/dev", "/tmp/ltlib-"}, {"/proc", "/dev/shm/ltlib-"}};
  for (const Case& row : cases) {
    SCOPED_TRACE(row.hidden);
    const int result = runForked([&] {
      if (!hideFolder(row.hidden)) {
        return kNoRights;
      }
      ::umask(077);
      const MutexName name;
      const std::string path = lockFilePath(name.text());
      NamedMutex mutex(name.c_str());
      const bool clean = lockText(mutex).empty() && isHeld(name.text());
      struct stat status {};
      const bool shared = ::stat(path.c_str(), &status) == 0 && (status.st_mode & 0777) == 0666;
      return clean && shared && path.rfind(row.folder, 0) == 0 ? 0 : 1;
    });
    if (result == kNoRights) {
      GTEST_SKIP() << "needs the right to mount";
    }
    EXPECT_EQ(result, 0);
  }
}

}  // namespace
