// Every way in which reading or replacing a store can fail: the result, the files, the locks.
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "ltlib/fileregistry/kFileRegistry.h"
#include "ltlib/fileregistry/store_files.h"
#include "tests/support/store_fixture.h"

namespace {

namespace fs = std::filesystem;
using LTLib::Platform::File;
using LTLib::Platform::fileCalls;
using LTLib::Platform::FilePermissions;
using LTLib::Platform::FileResult;
using LTLib::Testing::forgetStores;
using LTLib::Testing::OpenKey;
using LTLib::Testing::readFile;

constexpr enumRegRoot kMachine = REG_ROOT_LOCAL_MACHINE;
constexpr char kText[] = "[A\\B]\n\"n\"=ulong:1\n\n";

bool s_failing = false;
int s_renamesLeft = 0;

// Each fails as long as s_failing is set and hands on to the real call otherwise.
LTLib::Platform::FileCalls s_real;

File* openNothing(const char* path) {
  return s_failing ? nullptr : s_real.openForReading(path);
}

FileResult failRead(File& file, char* buffer, std::size_t capacity, std::size_t* taken) {
  const FileResult result = s_real.read(file, buffer, std::min<std::size_t>(capacity, 12), taken);
  return s_failing && *taken < 12 ? FileResult::kFailed : result;
}

FileResult failWrite(File& file, const char* bytes, std::size_t count) {
  return s_failing ? FileResult::kFailed : s_real.write(file, bytes, count);
}

FileResult failFlush(File& file) {
  return s_failing ? FileResult::kFailed : s_real.flush(file);
}

FileResult failClose(File* file) {
  const FileResult result = s_real.close(file);
  return s_failing ? FileResult::kFailed : result;
}

FileResult failLink(const char* path, const char* second) {
  return s_failing ? FileResult::kFailed : s_real.link(path, second);
}

FileResult noLinks(const char* path, const char* second) {
  return s_failing ? FileResult::kUnsupported : s_real.link(path, second);
}

FileResult failLaterRename(const char* from, const char* to) {
  return s_failing && s_renamesLeft-- <= 0 ? FileResult::kFailed : s_real.rename(from, to);
}

FileResult failFlushDirectory(const char* path) {
  return s_failing ? FileResult::kFailed : s_real.flushDirectory(path);
}

class StoreFailures : public LTLib::Testing::StoreTest {
 protected:
  StoreFailures() {
    s_real = fileCalls();
    s_failing = false;
    s_renamesLeft = 0;
    m_folder.write("qsconfig.dat", m_folder.name());
    m_folder.write("HKEY_LOCAL_MACHINE.cfg", kText);
    m_folder.write("HKEY_LOCAL_MACHINE.cfg_old", "older");
    EXPECT_EQ(load(), 1);
    EXPECT_EQ(OpenKey(m_manager, kMachine, "A\\B").setNumber("n", 2), 0);
  }

  // A save fails, the files stay, the locks are free, and the next save works.
  void expectSaveFails() {
    s_failing = true;
    EXPECT_EQ(m_manager.saveConfiguration(kMachine), static_cast<long>(LTLib::kFailure));
    s_failing = false;
    EXPECT_EQ(readFile(store()), kText);
    EXPECT_EQ(readFile(store() + "_old"), "older");
    EXPECT_EQ(m_folder.names(),
              (std::vector<std::string>{"HKEY_LOCAL_MACHINE.cfg", "HKEY_LOCAL_MACHINE.cfg_old",
                                        "qsconfig.dat"}));
    EXPECT_TRUE(locksAreFree());
    EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
    EXPECT_EQ(readFile(store()), "[A\\B]\n\"n\"=ulong:2\n\n");
    EXPECT_EQ(readFile(store() + "_old"), kText);
  }
};

TEST_F(StoreFailures, OfTheWriter) {
  fileCalls().write = failWrite;
  expectSaveFails();
}

TEST_F(StoreFailures, OfTheFlushToTheDevice) {
  fileCalls().flush = failFlush;
  expectSaveFails();
}

TEST_F(StoreFailures, OfTheClose) {
  fileCalls().close = failClose;
  expectSaveFails();
}

TEST_F(StoreFailures, OfTheSecondName) {
  fileCalls().link = failLink;
  expectSaveFails();
}

TEST_F(StoreFailures, OfTheDirectoryFlush) {
  fileCalls().flushDirectory = failFlushDirectory;
  expectSaveFails();
}

TEST_F(StoreFailures, OfEveryRename) {
  fileCalls().rename = failLaterRename;
  expectSaveFails();
}

// One rename works, the one that brings the new file in fails, and those that undo it work.
FileResult failSecondRename(const char* from, const char* to) {
  return s_failing && s_renamesLeft++ == 1 ? FileResult::kFailed : s_real.rename(from, to);
}

TEST_F(StoreFailures, OfTheRenameOntoTheStore) {
  fileCalls().rename = failSecondRename;
  expectSaveFails();
}

FileResult failThirdRename(const char* from, const char* to) {
  return s_failing && s_renamesLeft++ == 2 ? FileResult::kFailed : s_real.rename(from, to);
}

TEST_F(StoreFailures, OfTheRenameOntoTheStoreWithoutSecondNames) {
  fileCalls().link = noLinks;
  fileCalls().rename = failThirdRename;
  expectSaveFails();
}

TEST_F(StoreFailures, SystemsWithoutSecondNamesAreServedByRenames) {
  fileCalls().link = noLinks;
  s_failing = true;
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(readFile(store()), "[A\\B]\n\"n\"=ulong:2\n\n");
  EXPECT_EQ(readFile(store() + "_old"), kText);
}

// What stands in the way is a folder, since a test that runs with all rights is refused little.
TEST_F(StoreFailures, OfAFolderInTheWay) {
  for (const char* suffix : {"_new", "_old"}) {
    SCOPED_TRACE(suffix);
    const std::string way = store() + suffix;
    fs::remove(way);
    fs::create_directory(way);
    m_folder.write(fs::path(way).filename().string() + "/inside", "x");
    EXPECT_LT(m_manager.saveConfiguration(kMachine), 0);
    EXPECT_EQ(readFile(store()), kText);
    EXPECT_EQ(readFile(way + "/inside"), "x");
    EXPECT_TRUE(locksAreFree());
    fs::remove_all(way);
    m_folder.write("HKEY_LOCAL_MACHINE.cfg_old", "older");
  }
}

TEST_F(StoreFailures, OfAFolderInPlaceOfTheStore) {
  fs::remove(store());
  fs::create_directory(store());
  EXPECT_LT(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_TRUE(fs::is_directory(store()));
  EXPECT_EQ(readFile(store() + "_old"), "older");
  EXPECT_TRUE(locksAreFree());
  forgetStores();
  EXPECT_EQ(load(), 1) << "reads as empty";
}

TEST_F(StoreFailures, OfAFullDisk) {
  if (!fs::exists("/dev/full")) {
    GTEST_SKIP() << "this system has no full device";
  }
  fs::create_symlink("/dev/full", store() + "_new");
  EXPECT_LT(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(readFile(store()), kText);
  EXPECT_EQ(readFile(store() + "_old"), "older");
  EXPECT_FALSE(fs::is_symlink(store() + "_new"));
  EXPECT_TRUE(locksAreFree());
}

TEST_F(StoreFailures, OfTextsThatNoFileCanHold) {
  forgetStores();
  m_folder.write("HKEY_LOCAL_MACHINE.cfg", "[A\\B]\n\"n\"=binary:x\\\\");
  EXPECT_EQ(load(), 1);
  EXPECT_LT(m_manager.saveConfiguration(kMachine), 0);
  EXPECT_EQ(readFile(store()), "[A\\B]\n\"n\"=binary:x\\\\");
  EXPECT_EQ(readFile(store() + "_old"), "older");
  EXPECT_EQ(OpenKey(m_manager, kMachine, "A\\B").setText("n", "mended", REG_BINARY), 0);
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
}

TEST_F(StoreFailures, OfAReadInTheMiddleOfTheFile) {
  forgetStores();
  fileCalls().read = failRead;
  (void)LTLib::detail::cfgLockName(store());
  s_failing = true;
  EXPECT_THROW((void)load(), QSException);
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), static_cast<long>(LTLib::kFailure));
  s_failing = false;
  EXPECT_EQ(readFile(store()), kText);
  EXPECT_TRUE(locksAreFree());
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(LTLib::Testing::showRoot(kMachine), "A\nA/B|n|0|1\n");
}

TEST_F(StoreFailures, OfAnUnreadableStoreIsAnEmptyRoot) {
  forgetStores();
  (void)LTLib::detail::cfgLockName(store());
  fileCalls().openForReading = openNothing;
  s_failing = true;
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(LTLib::Testing::showRoot(kMachine), "");
}

TEST_F(StoreFailures, OfAnIdentityFileThatCannotBeMade) {
  const LTLib::Testing::ScopedEnvironment absent("HKEY_USERS", m_folder.path("no/such/users.cfg"));
  EXPECT_THROW((void)load(REG_ROOT_USERS), std::length_error);
  std::string pathname = m_folder.path("no/such/users.cfg");
  EXPECT_EQ(m_manager.saveConfiguration(kMachine, pathname), static_cast<long>(LTLib::kFailure));
  EXPECT_TRUE(locksAreFree());

  fs::create_directories(m_folder.path("full/qsconfig.dat"));
  const LTLib::Testing::ScopedEnvironment folder("HKEY_USERS", m_folder.path("full/users.cfg"));
  EXPECT_THROW((void)load(REG_ROOT_USERS), std::length_error);
  EXPECT_TRUE(locksAreFree());
}

TEST_F(StoreFailures, OfAnIdentityFileThatCannotBeWritten) {
  const LTLib::Testing::ScopedEnvironment elsewhere("HKEY_USERS", m_folder.path("sub/users.cfg"));
  fs::create_directory(m_folder.path("sub"));
  fileCalls().write = failWrite;
  s_failing = true;
  EXPECT_THROW((void)load(REG_ROOT_USERS), std::length_error);
  EXPECT_TRUE(fs::is_empty(m_folder.path("sub")));
  s_failing = false;
  EXPECT_EQ(load(REG_ROOT_USERS), 1);
}

}  // namespace
