// Stores among other users, other containers and what they lay in the way. What another user does
// is done by a child that has given up the rights of the tests' own.
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <tuple>

#include "ltlib/fileregistry/store/store_failure.h"
#include "ltlib/fileregistry/store/store_guard.h"
#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/variables/first_use_load.h"
#include "tests/support/child_process.h"
#include "tests/support/forked_child.h"
#include "tests/support/store_fixture.h"

namespace {

std::string s_watched;       // a store's file
bool s_wasAbsent = false;    // whether a rename has left no such file
std::string s_flushed;       // what was brought to the device since it was emptied
bool s_linksUsedUp = false;  // whether each file has as many names as it may have

}  // namespace

// These stand in for the C library's, for what the table of the calls cannot show.
extern "C" int fsync(int descriptor) {
  struct stat seen {};
  ::fstat(descriptor, &seen);
  s_flushed += S_ISDIR(seen.st_mode) ? "folder " : "file ";
  return ::fdatasync(descriptor);
}

extern "C" int link(const char* path, const char* second) noexcept {
  errno = EMLINK;
  return s_linksUsedUp ? -1 : ::linkat(AT_FDCWD, path, AT_FDCWD, second, 0);
}

extern "C" int rename(const char* from, const char* to) noexcept {
  const int answer = ::renameat(AT_FDCWD, from, AT_FDCWD, to);
  s_wasAbsent = s_wasAbsent || ::access(s_watched.c_str(), F_OK) != 0;
  return answer;
}

namespace {

namespace fs = std::filesystem;
using namespace LTLib::Testing;
using LTLib::Platform::fileCalls;
using LTLib::Platform::FileResult;
using Names = std::vector<std::string>;

constexpr char kWritten[] = "[A\\B]\n\"n\"=string:\"1\"\n\n";
constexpr char kRewritten[] = "[A\\B]\n\"n\"=string:\"2\"\n\n";

using Owner = std::tuple<uid_t, gid_t, mode_t>;

Owner ownerOf(const std::string& path) {
  struct stat seen {};
  EXPECT_EQ(::lstat(path.c_str(), &seen), 0) << path;
  return {seen.st_uid, seen.st_gid, seen.st_mode & 07777};
}

void give(const std::string& path, const Owner& owner) {
  const auto [user, group, mode] = owner;
  ASSERT_EQ(::lchown(path.c_str(), user, group), 0);
  ASSERT_TRUE(fs::is_symlink(path) || ::chmod(path.c_str(), mode) == 0);
}

void layPipe(const std::string& path) {
  ASSERT_EQ(::mkfifo(path.c_str(), 0666), 0);
}

// Works in the system's folder of temporary files, since only the administrator may enter that of
// TMPDIR on some machines.
class StoreNeighbours : private ScopedEnvironment, public StoreTest {
 protected:
  StoreNeighbours() : ScopedEnvironment("TMPDIR", std::nullopt) {}

  void SetUp() override {
    if (::geteuid() != 0) {
      GTEST_SKIP() << "only the administrator can play other users";
    }
  }

  // Whether something holds in a new process of a user, whose group and further group have the
  // user's own number and 3000. A call that hangs ends that process.
  static bool as(uid_t user, const std::function<bool()>& predicate) {
    return holdsInForked([&] {
      ::alarm(20);
      forgetStores();
      const gid_t further = 3000;
      return (user == 0 ||
              (::setgroups(1, &further) == 0 && ::setgid(user) == 0 && ::setuid(user) == 0)) &&
             predicate();
    });
  }

  bool changes() { return OpenKey("A\\B").set("n", "2") == 0 && save() == 0; }
  static bool reads(const std::string& value) { return OpenKey("A\\B").text("n") == value; }
};

TEST_F(StoreNeighbours, SavesKeepOwnerGroupAndRightsAndWidenNone) {
  const std::tuple<Owner, uid_t, Owner> rows[] = {
      {{1000, 1001, 0600}, 0, {1000, 1001, 0600}},
      {{1000, 3000, 0660}, 2000, {2000, 3000, 0660}},  // a group of the saver's
      {{1000, 1000, 0664}, 2000, {2000, 2000, 0644}},
      {{1000, 1000, 0606}, 2000, {2000, 2000, 0600}},  // the former group had nothing
      {{1000, 3000, 0466}, 2000, {2000, 3000, 0444}},  // and the former owner could not write
  };
  give(m_folder.path(), {0, 0, 0777});
  for (const auto& [before, saver, after] : rows) {
    restartWith(kWritten);
    give(store(), before);
    EXPECT_TRUE(as(saver, [&] { return changes(); })) << saver;
    EXPECT_EQ(readFile(store()), kRewritten);
    EXPECT_EQ(ownerOf(store()), after);
  }
  give(m_folder.path(), {0, 0, 01777});
  EXPECT_FALSE(as(1000, [&] { return changes(); })) << "the folder lets nobody replace another's";
}

// An access list is a part of the rights, on file systems that have such lists.
TEST_F(StoreNeighbours, SavesKeepAccessLists) {
  // Version 2: the owner rw, user 2000 r, the group none, the mask rw, others none.
  const std::string list(
      "\2\0\0\0\1\0\6\0\xFF\xFF\xFF\xFF\2\0\4\0\xD0\7\0\0\4\0\0\0\xFF\xFF\xFF\xFF"
      "\20\0\6\0\xFF\xFF\xFF\xFF\40\0\0\0\xFF\xFF\xFF\xFF",
      44);
  restartWith(kWritten);
  constexpr char kList[] = "system.posix_acl_access";
  if (::setxattr(store().c_str(), kList, list.data(), list.size(), 0) != 0) {
    GTEST_SKIP() << "this file system has no access lists";
  }
  EXPECT_TRUE(as(0, [&] { return changes(); }));
  EXPECT_TRUE(as(2000, [&] { return reads("2"); }));
}

TEST_F(StoreNeighbours, WhatTheAdministratorMakesIsTheFolderOwners) {
  give(m_folder.path(), {1000, 1000, 0755});
  EXPECT_TRUE(as(0, [&] {
    ::umask(077);
    return changes();
  }));
  EXPECT_EQ(ownerOf(store()), (Owner{1000, 1000, 0600}));
  EXPECT_EQ(ownerOf(m_folder.path("qsconfig.dat")), (Owner{1000, 1000, 0644}));
  EXPECT_TRUE(as(2000, [&] { return load(); })) << "everybody can lock the folder";
}

// A trap lies under a name that the library makes. Nothing of it is followed, read or written.
TEST_F(StoreNeighbours, TrapsAreNotFollowed) {
  const std::string victim = m_folder.write("victim", "secret");
  const std::string trap = store() + "_new";
  const std::pair<uid_t, std::function<void()>> traps[] = {
      {0, [&] { fs::create_symlink(victim, trap); }},
      {0, [&] { fs::create_hard_link(victim, trap); }},
      {0, [&] { layPipe(trap); }},
      {1000, [&] { m_folder.write("HKEY_LOCAL_MACHINE.cfg_new", "another user's"); }}};
  give(m_folder.path(), {1000, 1000, 0700});
  for (const auto& [saver, lay] : traps) {
    restartWith(kWritten);
    give(store(), {1000, 1000, 0666});
    lay();
    EXPECT_TRUE(as(saver, [&] { return changes(); }));
    EXPECT_EQ(readFile(store()) + readFile(victim), std::string(kRewritten) + "secret");
    EXPECT_FALSE(fs::exists(fs::symlink_status(trap)));
  }
}

TEST_F(StoreNeighbours, LinkedStoresStayLinks) {
  fs::create_directories(m_folder.path("real/deep"));
  const std::string target = m_folder.path("real/deep/s.cfg");
  fs::create_symlink("deep/s.cfg", m_folder.path("real/second"));
  // Where it leads, whose link it is, whose folder, and whether it is followed.
  const std::tuple<std::string, uid_t, Owner, bool> rows[] = {
      {"real/second", 0, {0, 0, 0755}, true},
      {target, 2000, {2000, 2000, 0755}, true},
      {target, 2000, {0, 0, 0777}, false},
      {store(), 0, {0, 0, 0755}, false}};
  for (const auto& [leads, owner, folder, followed] : rows) {
    fs::remove(store());
    fs::remove(target + "_old");
    m_folder.write("real/deep/s.cfg", kWritten);
    fs::create_symlink(leads, store());
    give(store(), {owner, owner, 0});
    give(m_folder.path(), folder);
    const std::string value = followed ? "1" : "<-1>";
    EXPECT_TRUE(as(0, [&] { return reads(value) && changes() == (value == "1"); }))
        << leads << owner;
    EXPECT_TRUE(fs::is_symlink(store()));
    EXPECT_EQ(m_folder.names(), (Names{"HKEY_LOCAL_MACHINE.cfg", "real"}));
    EXPECT_EQ(readFile(target), followed ? kRewritten : kWritten);
    EXPECT_EQ(fs::exists(target + "_old"), followed);
  }
}

TEST_F(StoreNeighbours, WhatCannotBeReadIsNotReplacedAndHoldsNobodyUp) {
  give(m_folder.path(), {1000, 1000, 0755});
  const std::function<void()> stores[] = {
      [&] {
        give(m_folder.write("HKEY_LOCAL_MACHINE.cfg", kWritten), {0, 0, 0600});
      },
      [&] { layPipe(store()); }};
  for (const auto& lay : stores) {
    lay();
    EXPECT_TRUE(as(1000, [&] {
      std::string elsewhere = m_folder.path("copy.cfg");
      return reads("<-1>") && !changes() && !changes() &&
             m_manager.saveConfiguration(kMachine, elsewhere) != 0 &&
             LTLib::lastStoreFailure().find("counts as empty") != std::string::npos;
    }));
    EXPECT_EQ(m_folder.names(), (Names{"HKEY_LOCAL_MACHINE.cfg", "qsconfig.dat"}));
    fs::remove(store());
  }
  const std::string identity = m_folder.path("qsconfig.dat");
  const std::function<void()> identities[] = {
      [&] { layPipe(identity); }, [&] { m_folder.write("qsconfig.dat", std::string(513, 'x')); },
      [&] { fs::create_symlink(m_folder.write("small", "name"), identity); }};
  for (const auto& lay : identities) {
    fs::remove(identity);
    lay();
    EXPECT_THROW((void)load(), std::length_error);
  }
}

// The store is absent for a moment only where names cannot be exchanged and a file has none to spare.
TEST_F(StoreNeighbours, SavesReachTheDeviceAndLeaveNoMomentWithoutAStore) {
  s_watched = store();
  s_wasAbsent = false;
  for (const char* const way : {"exchange", "second name", "renames"}) {
    restartWith(kWritten);
    EXPECT_EQ(OpenKey("A\\B").set("n", "2"), 0);
    s_flushed.clear();
    s_linksUsedUp = way == std::string("renames");
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(s_wasAbsent, s_linksUsedUp) << way;
    EXPECT_EQ(s_flushed, "file folder ") << way;
    EXPECT_EQ(readFile(store()) + readFile(store() + "_old"), std::string(kRewritten) + kWritten);
    fileCalls().exchange = [](const char*, const char*) { return FileResult::kUnsupported; };
  }
  s_linksUsedUp = false;
}

TEST_F(StoreNeighbours, AForkedChildLeavesItsParentsLockAlone) {
  auto guard = std::make_unique<LTLib::StoreGuard>(store());
  EXPECT_TRUE(holdsInForked([&] {
    guard.reset();
    return true;
  }));
  const int identity = ::open(m_folder.path("qsconfig.dat").c_str(), O_RDONLY | O_CLOEXEC);
  EXPECT_NE(::flock(identity, LOCK_EX | LOCK_NB), 0);
  ::close(identity);
}

TEST_F(StoreNeighbours, WhatASaveHasLeftBesideAMissingStoreIsKept) {
  for (const std::string last : {"~", "1"}) {
    fs::remove(store());
    m_folder.write("HKEY_LOCAL_MACHINE.cfg_old", last);
    m_folder.write("HKEY_LOCAL_MACHINE.cfg_new", last);
    EXPECT_TRUE(as(0, [&] { return reads("<-1>") && changes() && changes(); }));
    EXPECT_EQ(readFile(store() + "_ol" + last) + readFile(store() + "_ne" + last), last + last);
    EXPECT_EQ(readFile(store()) + readFile(store() + "_old"), std::string(kRewritten) + kRewritten);
  }
  fs::remove(store());
  m_folder.write("HKEY_LOCAL_MACHINE.cfg_new", "newest");
  fileCalls().create = [](const char*, const char*, LTLib::Platform::File**) {
    return FileResult::kFailed;
  };
  EXPECT_FALSE(as(0, [&] { return changes(); }));
  EXPECT_EQ(readFile(store() + "_new"), "newest") << "a save that fails gives the names back";
}

const Scenario s_settings("settings", [](const Names&) {
  tellParent(LTLib::detail::readConfigFile().value_or("none") + ' ' +
             LTLib::detail::cfgDefaultPathname(kMachine));
  return 0;
});

// Nor does a pipe in the place of a file of settings hold it up.
TEST_F(StoreNeighbours, ProcessWithMoreRightsThanItsCallerDoesNotObeyTheEnvironment) {
  const std::string program = m_folder.path("program");
  fs::copy_file(thisProgram(), program);
  layPipe(m_folder.path("config.dat"));
  give(m_folder.path(), {0, 0, 0777});
  const std::pair<mode_t, std::string> rows[] = {{0755, "none " + store()},
                                                 {04755, "none HKEY_LOCAL_MACHINE.cfg"}};
  for (const auto& [mode, told] : rows) {
    give(program, {0, 0, mode});
    EXPECT_TRUE(as(2000, [&] { return ChildProcess("settings", {}, program).hear() == told; }));
  }
}

}  // namespace
