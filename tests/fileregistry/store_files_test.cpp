// Where stores and their locks lie, what loads and saves read and write there, and how much.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/foundation/uid.h"
#include "tests/support/store_fixture.h"
#include "tests/support/system.h"

namespace {

namespace fs = std::filesystem;
using namespace LTLib::Testing;
using Names = std::vector<std::string>;

std::string numberText(int number) {
  return "[A\\B]\n\"n\"=ulong:" + std::to_string(number) + "\n\n";
}

void setNumber(int number) {
  EXPECT_EQ(OpenKey("A\\B").setNumber("n", static_cast<std::uint32_t>(number)), 0);
}

// In the folder of the stores.
class StoreFiles : public StoreTest {
 protected:
  StoreFiles() { fs::current_path(m_folder.path()); }
  ~StoreFiles() override { fs::current_path(m_before); }

  const Names m_saved = {"HKEY_LOCAL_MACHINE.cfg", "qsconfig.dat"};

 private:
  fs::path m_before = fs::current_path();
};

TEST_F(StoreFiles, FirstTouchMakesTheIdentityFileAndNoStore) {
  const ScopedEnvironment unset("HKEY_LOCAL_MACHINE", std::nullopt);
  EXPECT_TRUE(load());
  EXPECT_EQ(m_folder.names(), Names{"qsconfig.dat"});
  const std::string identity = readFile("qsconfig.dat");
  ASSERT_EQ(identity.size(), 46u);
  EXPECT_EQ(identity.substr(0, 10), "qs_config_");
  EXPECT_TRUE(UID("").fromString(identity.substr(10)));
}

TEST_F(StoreFiles, LockNamesComeFromTheFolderAsItsFileSays) {
  const std::pair<const char*, const char*> cases[] = {{"", "qs_config"},
                                                       {"own/b\\c\n", "own/b\\c\n"}};
  for (const auto& [identity, name] : cases) {
    forgetStores();
    m_folder.write("qsconfig.dat", identity);
    for (const std::string& path : {store(), m_folder.path("other"), m_folder.path("./other")}) {
      EXPECT_EQ(LTLib::detail::cfgLockName(path), name);
    }
    EXPECT_EQ(readFile("qsconfig.dat"), identity);
    m_folder.write("qsconfig.dat", "changed later");
    EXPECT_EQ(LTLib::detail::cfgLockName(store()), name) << "looked at once in a process";
  }
}

TEST_F(StoreFiles, RootsAreReadOnceAndSavesKeepTheVersionBefore) {
  restartWith(numberText(1));
  fs::permissions(store(), fs::perms::owner_read | fs::perms::owner_write);
  const fs::perms permissions = fs::status(store()).permissions();
  EXPECT_TRUE(load());
  for (const int number : {2, 3}) {
    setNumber(number);
    m_folder.write("HKEY_LOCAL_MACHINE.cfg", "changed by another");
    m_folder.write("HKEY_LOCAL_MACHINE.cfg_new", "left over from a crash");
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(m_folder.names(), (Names{m_saved[0], "HKEY_LOCAL_MACHINE.cfg_old", m_saved[1]}));
    EXPECT_EQ(readFile(store()), numberText(number));
    EXPECT_EQ(readFile(store() + "_old"), "changed by another");
    EXPECT_EQ(fs::status(store()).permissions(), permissions);
    fs::permissions(store() + "_old", fs::perms::owner_read);
  }
  fs::remove(store());
  EXPECT_EQ(save(), 0);
  EXPECT_EQ(m_folder.names(), m_saved);
  EXPECT_EQ(showRoot(REG_ROOT_USERS), "");
}

TEST_F(StoreFiles, SavesElsewhereAndUnderTheDefaultName) {
  restartWith(numberText(1));
  ASSERT_TRUE(load(REG_ROOT_USERS));
  EXPECT_EQ(save(), 0);
  EXPECT_FALSE(fs::exists(store() + "_old")) << "the file is an untouched root's state";
  std::string pathname = m_folder.path("copy.cfg");
  EXPECT_EQ(m_manager.saveConfiguration(kMachine, pathname), 0);
  EXPECT_EQ(readFile("copy.cfg"), numberText(1)) << "the root is loaded first";
  const ScopedEnvironment elsewhere("HKEY_LOCAL_MACHINE", m_folder.path("x.cfg"));
  pathname.clear();
  EXPECT_EQ(m_manager.saveConfiguration(kMachine, pathname) + save(), 0);
  EXPECT_EQ(pathname, "HKEY_LOCAL_MACHINE.cfg");
  EXPECT_EQ(readFile("x.cfg") + readFile(store() + "_old"), numberText(1) + numberText(1));
}

TEST_F(StoreFiles, RootWithoutAFile) {
  const ScopedEnvironment empty("HKEY_LOCAL_MACHINE", "");
  EXPECT_EQ(m_manager.GetConfigurationPathname(kMachine), "");
  EXPECT_EQ(save(), 0);
  EXPECT_FALSE(fs::exists(store()));
  setNumber(1);
  EXPECT_FALSE(load());
  EXPECT_EQ(save(), 0);
  EXPECT_EQ(readFile(store()), numberText(1));
  m_folder.write("later.cfg", "[A\\B]\n\"m\"=ulong:5\n");
  const ScopedEnvironment later("HKEY_LOCAL_MACHINE", "later.cfg");
  EXPECT_EQ(save(), 0) << "the variable is asked again";
  EXPECT_EQ(readFile("later.cfg"), "[A\\B]\n\"n\"=ulong:1\n\"m\"=ulong:5\n\n");
}

TEST_F(StoreFiles, EitherSystemsStoreComesBackWithThisSystemsEnds) {
  const std::string ends[] = {
      "[A\\B]\n\"t\"=string:\"\xC3\xA4\r\"\n\"b\"=binary: \x1A\n\n",
      "[A\\B]\r\n\"t\"=string:\"\xC3\xA4\r\"\r\n\"b\"=binary: \x1A\r\n\r\n"};
  for (const std::string& text : ends) {
    restartWith(text);
    EXPECT_TRUE(load());
    EXPECT_EQ(save(), 0);
    std::ifstream file(store(), std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), ends[kOnWindows ? 1 : 0]);
  }
}

}  // namespace
