#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "ltlib/fileregistry/kFileRegistry.h"
#include "ltlib/fileregistry/store_files.h"
#include "ltlib/foundation/uid.h"
#include "tests/support/store_fixture.h"

namespace {

namespace fs = std::filesystem;
using LTLib::Testing::forgetStores;
using LTLib::Testing::OpenKey;
using LTLib::Testing::readFile;
using LTLib::Testing::ScopedEnvironment;
using LTLib::Testing::showRoot;
using Names = std::vector<std::string>;

constexpr enumRegRoot kMachine = REG_ROOT_LOCAL_MACHINE;
constexpr char kText[] = "[A\\B]\n\"n\"=ulong:1\n\n";
constexpr char kChanged[] = "[A\\B]\n\"n\"=ulong:2\n\n";

class CurrentFolder {
 public:
  explicit CurrentFolder(const std::string& path) : m_before(fs::current_path()) {
    fs::current_path(path);
  }
  ~CurrentFolder() { fs::current_path(m_before); }

 private:
  fs::path m_before;
};

class StoreFiles : public LTLib::Testing::StoreTest {
 protected:
  void setNumber(std::uint32_t number) {
    EXPECT_EQ(OpenKey(m_manager, kMachine, "A\\B").setNumber("n", number), 0);
  }
  [[nodiscard]] std::string text() { return OpenKey(m_manager, kMachine, "A\\B").text("n"); }
};

TEST_F(StoreFiles, PathnamesComeFromTheEnvironmentElseTheRoot) {
  EXPECT_EQ(m_manager.GetConfigurationPathname(kMachine), store());
  const ScopedEnvironment unset("HKEY_USERS", std::nullopt);
  const ScopedEnvironment empty("HKEY_CLASSES_ROOT", "");
  EXPECT_EQ(m_manager.GetConfigurationPathname(REG_ROOT_USERS), "HKEY_USERS.cfg");
  EXPECT_EQ(m_manager.GetConfigurationPathname(REG_ROOT_CLASSES_ROOT), "");
  EXPECT_EQ(m_manager.GetConfigurationPathname(REG_ROOT_NONE), "");
  EXPECT_EQ(m_manager.GetConfigurationPathname(static_cast<enumRegRoot>(6)), "");
}

TEST_F(StoreFiles, FirstTouchMakesTheIdentityFileAndNoStore) {
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(m_folder.names(), Names{"qsconfig.dat"});
  const std::string identity = readFile(m_folder.path("qsconfig.dat"));
  ASSERT_EQ(identity.size(), 46u);
  EXPECT_EQ(identity.substr(0, 10), "qs_config_");
  UID id("");
  EXPECT_TRUE(id.fromString(identity.substr(10)));
  forgetStores();
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(readFile(m_folder.path("qsconfig.dat")), identity);
}

TEST_F(StoreFiles, DefaultNamesCountFromTheCurrentFolder) {
  const CurrentFolder here(m_folder.path());
  const ScopedEnvironment unset("HKEY_LOCAL_MACHINE", std::nullopt);
  setNumber(1);
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(m_folder.names(), (Names{"HKEY_LOCAL_MACHINE.cfg", "qsconfig.dat"}));
}

TEST_F(StoreFiles, LockNamesComeFromTheFolderAsItsFileSays) {
  const struct {
    const char* identity;
    const char* name;
  } cases[] = {{"", "qs_config"}, {"own name\n", "own name\n"}, {"a/b\\c", "a/b\\c"}};
  for (const auto& row : cases) {
    forgetStores();
    m_folder.write("qsconfig.dat", row.identity);
    EXPECT_EQ(LTLib::detail::cfgLockName(store()), row.name);
    EXPECT_EQ(LTLib::detail::cfgLockName(m_folder.path("other")), row.name);
    EXPECT_EQ(LTLib::detail::cfgLockName(m_folder.path("./other")), row.name);
    EXPECT_EQ(readFile(m_folder.path("qsconfig.dat")), row.identity);
    m_folder.write("qsconfig.dat", "changed later");
    EXPECT_EQ(LTLib::detail::cfgLockName(store()), row.name) << "looked at once in a process";
  }
}

TEST_F(StoreFiles, ReadsARootOnce) {
  m_folder.write("HKEY_LOCAL_MACHINE.cfg", kText);
  EXPECT_EQ(text(), std::string("\1\0\0\0", 4));
  m_folder.write("HKEY_LOCAL_MACHINE.cfg", kChanged);
  EXPECT_EQ(text(), std::string("\1\0\0\0", 4));
  EXPECT_EQ(showRoot(REG_ROOT_USERS), "");
  forgetStores();
  EXPECT_EQ(text(), std::string("\2\0\0\0", 4));
}

// The three files after each of a row of saves.
TEST_F(StoreFiles, SavesKeepTheVersionBefore) {
  setNumber(1);
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(m_folder.names(), (Names{"HKEY_LOCAL_MACHINE.cfg", "qsconfig.dat"}));
  EXPECT_EQ(readFile(store()), kText);
  const Names all = {"HKEY_LOCAL_MACHINE.cfg", "HKEY_LOCAL_MACHINE.cfg_old", "qsconfig.dat"};
  setNumber(2);
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(m_folder.names(), all);
  EXPECT_EQ(readFile(store()), kChanged);
  EXPECT_EQ(readFile(store() + "_old"), kText);
  setNumber(3);
  m_folder.write("HKEY_LOCAL_MACHINE.cfg_new", "left over from a crash");
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(m_folder.names(), all);
  EXPECT_EQ(readFile(store() + "_old"), kChanged);
  fs::remove(store());
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(m_folder.names(), (Names{"HKEY_LOCAL_MACHINE.cfg", "qsconfig.dat"}));
}

TEST_F(StoreFiles, SavesElsewhereAndUnderTheDefaultName) {
  const CurrentFolder here(m_folder.path());
  setNumber(1);
  std::string pathname = m_folder.path("copy.cfg");
  EXPECT_EQ(m_manager.saveConfiguration(kMachine, pathname), 0);
  EXPECT_EQ(readFile(m_folder.path("copy.cfg")), kText);
  const ScopedEnvironment elsewhere("HKEY_LOCAL_MACHINE", m_folder.path("x.cfg"));
  pathname.clear();
  EXPECT_EQ(m_manager.saveConfiguration(kMachine, pathname), 0);
  EXPECT_EQ(pathname, "HKEY_LOCAL_MACHINE.cfg");
  EXPECT_EQ(readFile(store()), kText);
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(readFile(m_folder.path("x.cfg")), kText);
}

TEST_F(StoreFiles, PermissionsCarryOver) {
  m_folder.write("HKEY_LOCAL_MACHINE.cfg", kText);
  fs::permissions(store(), fs::perms::owner_read | fs::perms::owner_write);
  const fs::perms before = fs::status(store()).permissions();
  setNumber(2);
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(fs::status(store()).permissions(), before);
}

TEST_F(StoreFiles, SavingARootThatWasNeverTouched) {
  m_folder.write("HKEY_LOCAL_MACHINE.cfg", kText);
  ASSERT_EQ(load(REG_ROOT_USERS), 1);
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(readFile(store()), kText) << "the file is the root's state";
  EXPECT_FALSE(fs::exists(store() + "_old"));
  std::string pathname = m_folder.path("copy.cfg");
  EXPECT_EQ(m_manager.saveConfiguration(kMachine, pathname), 0);
  EXPECT_EQ(readFile(pathname), kText) << "the root is loaded first";
}

TEST_F(StoreFiles, RootWithoutAFile) {
  const CurrentFolder here(m_folder.path());
  const ScopedEnvironment empty("HKEY_LOCAL_MACHINE", "");
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_FALSE(fs::exists(store()));
  setNumber(1);
  EXPECT_EQ(load(), 0);
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(readFile(store()), kText);
  const ScopedEnvironment later("HKEY_LOCAL_MACHINE",
                                m_folder.write("later.cfg", "[A\\B]\n\"m\"=ulong:5\n"));
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0) << "the variable is asked again";
  EXPECT_EQ(readFile(m_folder.path("later.cfg")), "[A\\B]\n\"n\"=ulong:1\n\"m\"=ulong:5\n\n");
}

TEST_F(StoreFiles, BadRootIsRefusedBeforeAnythingIsTouched) {
  for (const int root : {0, 6, -1}) {
    std::string pathname;
    EXPECT_EQ(m_manager.saveConfiguration(static_cast<enumRegRoot>(root), pathname),
              static_cast<long>(LTLib::kFailure));
    EXPECT_LT(m_manager.saveConfiguration(static_cast<enumRegRoot>(root)), 0);
    EXPECT_EQ(pathname, "");
  }
  EXPECT_EQ(m_folder.names(), Names{});
}

TEST_F(StoreFiles, BadHeaderLeavesTheRootToBeReadAgain) {
  m_folder.write("HKEY_LOCAL_MACHINE.cfg", "[A\\B]\n\"n\"=ulong:1\n\"n\"=ulong:7\n[]\n[C\\D]\n");
  EXPECT_EQ(load(), 0);
  EXPECT_EQ(showRoot(kMachine), "A\nA/B|n|0|1\nA/B|n|0|7\n");
  EXPECT_LT(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(showRoot(kMachine), "A\nA/B|n|0|1\nA/B|n|0|7\n") << "nothing comes double";
  EXPECT_EQ(m_folder.names(), (Names{"HKEY_LOCAL_MACHINE.cfg", "qsconfig.dat"}));
  OpenKey key(m_manager, kMachine, "A\\B");
  EXPECT_EQ(m_manager.regDeleteValue(key.get(), "N"), 0);
  setNumber(3);
  m_folder.write("HKEY_LOCAL_MACHINE.cfg",
                 "[a\\b]\n\"N\"=ulong:1\n\"n\"=ulong:7\n\"n\"=ulong:9\n[C\\D]\n\"x\"=ulong:4\n");
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(readFile(store()), "[A\\B]\n\"n\"=ulong:3\n\"n\"=ulong:9\n\n[C\\D]\n\"x\"=ulong:4\n\n");
  EXPECT_EQ(load(REG_ROOT_USERS), 1);
}

TEST_F(StoreFiles, ParseErrorFailsTheLoadAndNothingElse) {
  m_folder.write("HKEY_LOCAL_MACHINE.cfg", "[A\\B]\n\"n\"=ulong:1\n\"s\"=string:\"x\n");
  for (int attempt = 0; attempt < 2; ++attempt) {
    try {
      (void)text();
      ADD_FAILURE() << "no exception";
    } catch (const QSException& caught) {
      EXPECT_EQ(caught.Result(), LTLib::kFailure);
      EXPECT_EQ(caught.What(), "registry read failed");
      EXPECT_STREQ(caught.File(), "kFileRegistry");
    }
    EXPECT_TRUE(locksAreFree());
  }
  EXPECT_EQ(load(REG_ROOT_USERS), 1);
  m_folder.write("HKEY_LOCAL_MACHINE.cfg", kText);
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(showRoot(kMachine), "A\nA/B|n|0|1\n");
}

}  // namespace
