// Stores among other users, other containers and what they lay in the way. What another user does
// is done by a child that has given up the rights of the tests' own.
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
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

std::string s_flushed;       // what was brought to the device since it was emptied
bool s_linksUsedUp = false;  // whether each file has as many names as it may have

}  // namespace

// These stand in for the C library's, for what the table of the calls cannot show.
extern "C" int fsync(int descriptor) {
  struct stat seen {};
  ::fstat(descriptor, &seen);
  s_flushed += S_ISDIR(seen.st_mode) ? "folder " : "file ";
  return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

extern "C" int link(const char* path, const char* second) noexcept {
  errno = EMLINK;
  return s_linksUsedUp
             ? -1
             : static_cast<int>(::syscall(SYS_linkat, AT_FDCWD, path, AT_FDCWD, second, 0));
}

namespace {

namespace fs = std::filesystem;
using namespace LTLib::Testing;
using LTLib::Platform::fileCalls;
using LTLib::Platform::FileResult;
using Names = std::vector<std::string>;

constexpr char kText[] = "[A\\B]\n\"n\"=string:\"1\"\n\n";
constexpr char kChanged[] = "[A\\B]\n\"n\"=string:\"2\"\n\n";
constexpr unsigned int kSecondsToHang = 20;

struct Owner {
  uid_t user;
  gid_t group;
  mode_t mode;
};

Owner ownerOf(const std::string& path) {
  struct stat seen {};
  EXPECT_EQ(::lstat(path.c_str(), &seen), 0) << path;
  return {seen.st_uid, seen.st_gid, seen.st_mode & 07777};
}

void give(const std::string& path, Owner owner) {
  ASSERT_EQ(::lchown(path.c_str(), owner.user, owner.group), 0);
  if (!fs::is_symlink(path)) {
    ASSERT_EQ(::chmod(path.c_str(), owner.mode), 0);
  }
}

class StoreNeighbours : public StoreTest {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) {
      GTEST_SKIP() << "only the administrator can play other users";
    }
  }

  // Whether something holds in a new process of a user, whose group and further group have the
  // user's own number and 3000. A call that hangs ends that process.
  static bool as(uid_t user, const std::function<bool()>& predicate) {
    return holdsInForked([&] {
      ::alarm(kSecondsToHang);
      forgetStores();
      const gid_t further = 3000;
      return (user == 0 ||
              (::setgroups(1, &further) == 0 && ::setgid(user) == 0 && ::setuid(user) == 0)) &&
             predicate();
    });
  }

  bool losesItsLock() {
    return as(0, [] {
      EXPECT_THROW((void)load(), std::length_error);
      return !HasFailure();
    });
  }

  bool changes() { return OpenKey("A\\B").set("n", "2") == 0 && save() == 0; }
  static bool reads(const std::string& value) { return OpenKey("A\\B").text("n") == value; }
  static bool unreadable() { return reads("<-1>"); }
};

TEST_F(StoreNeighbours, SavesKeepOwnerGroupAndRightsAndWidenNone) {
  const struct {
    Owner before;
    uid_t saver;
    Owner after;
  } rows[] = {
      {{1000, 1001, 0600}, 0, {1000, 1001, 0600}},
      {{1000, 1000, 0640}, 1000, {1000, 1000, 0640}},
      {{1000, 3000, 0660}, 2000, {2000, 3000, 0660}},  // a group of the saver's
      {{1000, 1000, 0664}, 2000, {2000, 2000, 0644}},
      {{1000, 1000, 0606}, 2000, {2000, 2000, 0600}},  // the former group had nothing
      {{1000, 3000, 0466}, 2000, {2000, 3000, 0444}},  // and the former owner could not write
  };
  give(m_folder.path(), {0, 0, 0777});
  for (const auto& row : rows) {
    restartWith(kText);
    give(store(), row.before);
    EXPECT_TRUE(as(row.saver, [&] { return changes(); })) << row.saver;
    EXPECT_EQ(readFile(store()), kChanged);
    const Owner after = ownerOf(store());
    EXPECT_EQ(std::vector<unsigned int>({after.user, after.group, after.mode}),
              std::vector<unsigned int>({row.after.user, row.after.group, row.after.mode}));
  }
}

// An access list is a part of the rights, on file systems that have such lists.
TEST_F(StoreNeighbours, SavesKeepAccessLists) {
  // Version 2: the owner rw, user 2000 r, the group none, the mask rw, others none.
  const unsigned char list[] = {2, 0,   0,   0,   1,   0,   6,  0, 255, 255, 255, 255, 2,   0,  4,
                                0, 208, 7,   0,   0,   4,   0,  0, 0,   255, 255, 255, 255, 16, 0,
                                6, 0,   255, 255, 255, 255, 32, 0, 0,   0,   255, 255, 255, 255};
  restartWith(kText);
  constexpr char kList[] = "system.posix_acl_access";
  if (::setxattr(store().c_str(), kList, list, sizeof list, 0) != 0) {
    GTEST_SKIP() << "this file system has no access lists";
  }
  EXPECT_TRUE(as(0, [&] { return changes(); }));
  unsigned char after[sizeof list] = {};
  EXPECT_EQ(::getxattr(store().c_str(), kList, after, sizeof after), sizeof list);
  EXPECT_TRUE(std::equal(list, list + sizeof list, after));
  EXPECT_TRUE(as(2000, [&] { return reads("2"); }));
}

TEST_F(StoreNeighbours, WhatTheAdministratorMakesIsTheFolderOwners) {
  const std::string identity = m_folder.path("qsconfig.dat");
  for (const uid_t owner : {0u, 1000u}) {
    give(m_folder.path(), {owner, owner, 0755});
    EXPECT_TRUE(as(0, [&] {
      ::umask(077);
      return changes();
    }));
    for (const std::string& made : {identity, store()}) {
      EXPECT_EQ(ownerOf(made).user, owner);
      EXPECT_EQ(ownerOf(made).group, owner);
    }
    EXPECT_EQ(ownerOf(identity).mode, 0644u);
    EXPECT_TRUE(as(2000, [&] { return load(); })) << "everybody can lock the folder";
    fs::remove(identity);
    fs::remove(store());
  }
}

// A trap lies under a name that the library makes. Nothing of it is followed, read or written.
TEST_F(StoreNeighbours, TrapsAreNotFollowed) {
  const std::string victim = m_folder.write("victim", "secret");
  const std::string trap = store() + "_new";
  const std::tuple<const char*, uid_t, std::function<void()>> traps[] = {
      {"link", 0, [&] { fs::create_symlink(victim, trap); }},
      {"dangling link", 0, [&] { fs::create_symlink(m_folder.path("absent"), trap); }},
      {"second name", 0, [&] { fs::create_hard_link(victim, trap); }},
      {"pipe", 0, [&] { ASSERT_EQ(::mkfifo(trap.c_str(), 0666), 0); }},
      {"another user's file", 1000, [&] { m_folder.write("HKEY_LOCAL_MACHINE.cfg_new", "x"); }}};
  give(m_folder.path(), {1000, 1000, 0700});
  for (const auto& [label, saver, lay] : traps) {
    restartWith(kText);
    give(store(), {1000, 1000, 0666});
    lay();
    EXPECT_TRUE(as(saver, [&] { return changes(); })) << label;
    EXPECT_EQ(readFile(store()) + readFile(victim), std::string(kChanged) + "secret") << label;
    EXPECT_FALSE(fs::exists(m_folder.path("absent")) || fs::exists(fs::symlink_status(trap)));
  }
}

TEST_F(StoreNeighbours, LinkedStoresStayLinks) {
  fs::create_directories(m_folder.path("real/deep"));
  const std::string target = m_folder.path("real/deep/s.cfg");
  fs::create_symlink("deep/s.cfg", m_folder.path("real/second"));
  const struct {
    const char* label;
    std::string leads;
    Owner link;
    Owner folder;
    bool followed;
  } rows[] = {{"relative chain of links", "real/second", {0, 0, 0}, {0, 0, 0755}, true},
              {"the folder owner's link", target, {2000, 2000, 0}, {2000, 2000, 0755}, true},
              {"another user's link", target, {2000, 2000, 0}, {0, 0, 0777}, false},
              {"a link in a circle", store(), {0, 0, 0}, {0, 0, 0755}, false}};
  for (const auto& row : rows) {
    fs::remove(store());
    fs::remove(target + "_old");
    m_folder.write("real/deep/s.cfg", kText);
    fs::create_symlink(row.leads, store());
    give(store(), row.link);
    give(m_folder.path(), row.folder);
    EXPECT_TRUE(as(0, [&] {
      const bool same = row.followed ? reads("1") : unreadable();
      const bool changed = changes();
      return same && changed == row.followed && (changed || !LTLib::lastStoreFailure().empty());
    })) << row.label;
    EXPECT_TRUE(fs::is_symlink(store()));
    EXPECT_EQ(m_folder.names(), (Names{"HKEY_LOCAL_MACHINE.cfg", "real"})) << row.label;
    EXPECT_EQ(readFile(target), row.followed ? kChanged : kText) << row.label;
    EXPECT_EQ(fs::exists(target + "_old"), row.followed) << row.label;
  }
}

TEST_F(StoreNeighbours, WhatCannotBeReadIsNotReplaced) {
  give(m_folder.path(), {1000, 1000, 0755});
  for (const bool folder : {false, true}) {
    restartWith(kText);
    give(store(), {0, 0, 0600});
    if (folder) {
      fs::remove(store());
      fs::create_directory(store());
    }
    EXPECT_TRUE(as(1000, [&] {
      std::string elsewhere = m_folder.path("copy.cfg");
      return unreadable() && !changes() && !changes() &&
             m_manager.saveConfiguration(kMachine, elsewhere) != 0 &&
             LTLib::lastStoreFailure().find("counts as empty") != std::string::npos;
    }));
    EXPECT_TRUE(folder || readFile(store()) == kText);
    EXPECT_EQ(m_folder.names(), (Names{"HKEY_LOCAL_MACHINE.cfg", "qsconfig.dat"}));
    fs::remove(store());
  }
}

// The token of config.dat, or that there is none.
const Scenario s_token("token", [](const Names&) {
  ::alarm(kSecondsToHang);
  tellParent("[" + LTLib::detail::readConfigFile().value_or("none") + "]");
  return 0;
});

TEST_F(StoreNeighbours, WhatIsNoSmallRegularFileHoldsNobodyUp) {
  const auto make = [](const std::string& path, mode_t kind) {
    fs::remove(path);
    ASSERT_EQ(::mknod(path.c_str(), kind | 0666, makedev(1, 5)), 0);
  };
  for (const mode_t kind : {S_IFIFO, S_IFCHR}) {  // a device as /dev/zero
    make(store(), kind);
    EXPECT_TRUE(as(0, [&] { return unreadable() && !changes(); }));
  }
  const std::string identity = m_folder.path("qsconfig.dat");
  const std::function<void()> identities[] = {
      [&] { make(identity, S_IFIFO); },
      [&] { fs::resize_file(m_folder.write("qsconfig.dat", ""), std::uintmax_t{1} << 30); },
      [&] { m_folder.write("qsconfig.dat", std::string(513, 'x')); },
      [&] { fs::create_symlink("absent", identity); },
      [&] { fs::create_symlink(m_folder.write("small", "name"), identity); }};
  for (const auto& lay : identities) {
    fs::remove(identity);
    lay();
    EXPECT_TRUE(losesItsLock());
    EXPECT_FALSE(fs::exists(m_folder.path("absent")));
  }
  fs::remove(identity);
  m_folder.write("qsconfig.dat", std::string(512, 'x'));
  EXPECT_TRUE(as(0, [&] { return load(); }));
  const std::string program = m_folder.path("program");
  fs::copy_file(thisProgram(), program);
  const std::pair<std::function<void()>, const char*> configs[] = {
      {[&] { make(m_folder.path("config.dat"), S_IFIFO); }, "[none]"},
      {[&] { m_folder.write("config.dat", "  one two"); }, "[one]"},
      {[&] { m_folder.write("config.dat", std::string(1 << 20, 'x')); }, "[none]"}};
  for (const auto& [lay, token] : configs) {
    lay();
    EXPECT_EQ(ChildProcess("token", {}, program).hear(), token);
    fs::remove(m_folder.path("config.dat"));
  }
}

// The system may refuse a file its second name, to others than its owner or beside too many.
TEST_F(StoreNeighbours, SavesReachTheDeviceAlsoWithoutASecondName) {
  fileCalls().exchange = [](const char*, const char*) { return FileResult::kUnsupported; };
  for (const bool usedUp : {false, true}) {
    restartWith(kText);
    EXPECT_EQ(OpenKey("A\\B").set("n", "2"), 0);
    s_flushed.clear();
    s_linksUsedUp = usedUp;
    EXPECT_EQ(save(), 0);
    s_linksUsedUp = false;
    EXPECT_EQ(s_flushed, "file folder ");
    EXPECT_EQ(readFile(store()) + readFile(store() + "_old"), std::string(kChanged) + kText);
  }
}

// Whether a rename has left no store file.
std::string s_watched;
bool s_wasAbsent = false;
FileResult (*s_rename)(const char*, const char*);

FileResult watchedRename(const char* from, const char* to) {
  const FileResult result = s_rename(from, to);
  s_wasAbsent = s_wasAbsent || ::access(s_watched.c_str(), F_OK) != 0;
  return result;
}

// The system refuses others a second name of a file; and a folder may let nobody replace another's.
TEST_F(StoreNeighbours, AnotherUsersStoreIsNeverAbsent) {
  for (const mode_t folder : {0777u, 01777u}) {
    const bool saved = folder == 0777;
    fs::remove(store() + "_old");
    restartWith(kText);
    give(store(), {1000, 1000, 0644});
    give(m_folder.path(), {0, 0, folder});
    EXPECT_TRUE(as(2000, [&] {
      s_watched = store();
      s_rename = std::exchange(fileCalls().rename, watchedRename);
      return changes() == saved && !s_wasAbsent;
    }));
    EXPECT_EQ(readFile(store()), saved ? kChanged : kText);
    EXPECT_EQ(fs::hard_link_count(store()), 1u);
    EXPECT_EQ(m_folder.names().size(), saved ? 3u : 2u);
  }
}

TEST_F(StoreNeighbours, ContainersExcludeOneAnother) {
  constexpr int kRounds = 100;
  const auto count = [&] {
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("none", "/dev/shm", "tmpfs", 0, nullptr) != 0) {
      return false;
    }
    for (int i = 0; i < kRounds; ++i) {
      forgetStores();
      const LTLib::StoreGuard guard(store());
      OpenKey key("A\\B");
      if (key.set("n", key.text("n") + 'x') != 0 || save() != 0) {
        return false;
      }
    }
    return true;
  };
  restartWith("[A\\B]\n\"n\"=string:\"\"\n\n");
  const pid_t first = startForked(count);
  const pid_t second = startForked(count);
  ASSERT_TRUE(heldInForked(first) && heldInForked(second));
  EXPECT_EQ(OpenKey("A\\B").text("n"), std::string(2 * kRounds, 'x'));
}

TEST_F(StoreNeighbours, AForkedChildLeavesItsParentsLockAlone) {
  auto guard = std::make_unique<LTLib::StoreGuard>(store());
  EXPECT_TRUE(holdsInForked([&] {
    guard.reset();
    return true;
  }));
  const int identity = ::open(m_folder.path("qsconfig.dat").c_str(), O_RDONLY | O_CLOEXEC);
  EXPECT_NE(::flock(identity, LOCK_EX | LOCK_NB), 0);
  guard.reset();
  EXPECT_EQ(::flock(identity, LOCK_EX | LOCK_NB), 0);
  ::close(identity);
}

TEST_F(StoreNeighbours, TheLongestNameThatCanBeSavedOnceCanBeSavedAgain) {
  std::string pathname = m_folder.path(std::string(251, 'x'));
  for (int save = 0; save < 3; ++save) {
    OpenKey("A\\B").setNumber("n", 1);
    EXPECT_EQ(m_manager.saveConfiguration(kMachine, pathname), 0);
  }
  EXPECT_EQ(m_folder.names().size(), 3u);
}

TEST_F(StoreNeighbours, WhatASaveHasLeftBesideAMissingStoreIsKept) {
  for (const char* const last : {"~", "1"}) {
    fs::remove(store());
    m_folder.write("HKEY_LOCAL_MACHINE.cfg_old", std::string("old") + last);
    m_folder.write("HKEY_LOCAL_MACHINE.cfg_new", std::string("new") + last);
    EXPECT_TRUE(as(0, [&] {
      return unreadable() && LTLib::lastStoreFailure().find("cfg_new, ") != std::string::npos &&
             changes() && changes();
    }));
    EXPECT_EQ(readFile(store() + "_ol" + last), std::string("old") + last);
    EXPECT_EQ(readFile(store() + "_ne" + last), std::string("new") + last);
    EXPECT_EQ(readFile(store()) + readFile(store() + "_old"), std::string(kChanged) + kChanged);
  }
  fs::remove(store());
  m_folder.write("HKEY_LOCAL_MACHINE.cfg_new", "newest");
  fs::create_directory(store() + "_ne2");
  EXPECT_TRUE(as(0, [&] {
    fileCalls().create = [](const char*, const char*, LTLib::Platform::File**) {
      return FileResult::kFailed;
    };
    return !changes();
  }));
  EXPECT_EQ(readFile(store() + "_new"), "newest") << "a save that fails gives the names back";
}

const Scenario s_pathname("pathname", [](const Names&) {
  std::puts(LTLib::detail::cfgDefaultPathname(kMachine).c_str());
  return 0;
});

TEST_F(StoreNeighbours, ProcessWithMoreRightsThanItsCallerDoesNotObeyTheEnvironment) {
  const std::string program = m_folder.path("program");
  fs::copy_file(thisProgram(), program);
  const std::string told = m_folder.path("told");
  give(m_folder.path(), {0, 0, 0777});
  for (const mode_t mode : {0755u, 04755u}) {
    give(program, {0, 0, mode});
    EXPECT_TRUE(as(2000, [&] {
      const std::string command = program + " --scenario=pathname >" + told;
      return ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr) == 0;
    }));
    EXPECT_EQ(readFile(told), (mode == 0755 ? store() : "HKEY_LOCAL_MACHINE.cfg") + "\n");
    fs::remove(told);
  }
}

}  // namespace
