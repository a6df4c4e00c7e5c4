#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "ltlib/fileregistry/store_check.h"
#include "ltlib/fileregistry/store_guard.h"
#include "tests/support/store_fixture.h"
#include "tests/support/text_tree.h"

namespace {

namespace fs = std::filesystem;
using LTLib::checkStoreFile;
using LTLib::StoreFault;
using LTLib::StoreFaultKind;
using LTLib::StoreReport;
using LTLib::Platform::FileResult;

constexpr enumRegRoot kMachine = REG_ROOT_LOCAL_MACHINE;

const char* shortName(StoreFaultKind kind) {
  constexpr const char* kNames[] = {"lock",   "nofile",   "unreadable", "readerror",
                                    "header", "unended",  "empty",      "dropped",
                                    "nokey",  "indented", "outofreach", "notsavable"};
  return kNames[static_cast<int>(kind)];
}

std::string shown(const StoreFault& fault) {
  return shortName(fault.kind) + std::to_string(fault.line);
}

// "warning1 warning2 ! fault", each with its line.
std::string shown(const StoreReport& report) {
  std::string text;
  for (const StoreFault& warning : report.warnings) {
    text += (text.empty() ? "" : " ") + shown(warning);
  }
  return report.fault ? text + "!" + shown(*report.fault) : text;
}

class StoreCheck : public LTLib::Testing::StoreTest {
 protected:
  StoreReport checkText(const std::string& text) {
    m_folder.write("HKEY_LOCAL_MACHINE.cfg", text);
    return checkStoreFile(store());
  }
};

TEST_F(StoreCheck, FindsTheLineOfEachFault) {
  struct Case {
    const char* text;
    const char* shown;
    std::size_t lines;
    std::size_t values;
  };
  const Case cases[] = {
      {"", "", 0, 0},
      {"; comment\n\n[A\\B]\n\"n\"=string:\"x\"\n\"u\"=ulong:1", "", 5, 2},
      {"[A\\B]\n[]\n\"n\"=ulong:1\n", "!header2", 2, 0},
      {"[A\\B\n", "!header1", 1, 0},
      {"[A\\B]\n\n\"n\"=string:\"a\\\nb\\\nc\n\"m\"=ulong:1\n", "!unended3", 5, 0},
      {"[A\\B]\n\"n\"=string:\"abc\n", "!unended2", 2, 0},
      {"[A\\B]\n\"n\"=string:\"abc\\\n", "", 2, 1},
      {"[A\\B]\n\"n\"=string:abc\n\"m\"=ulong:\n", "empty2 empty3", 3, 2},
      {"[A\\B]\n\"\"=ulong:1\n\"n\"=Ulong:1\n\"n\n\"n\"ulong:1\n",
       "dropped2 dropped3 dropped4 dropped5", 5, 0},
      {"\"n\"=ulong:1\\\n[A\\B]\n[A\\C]\n\"n\"=ulong:1\n", "nokey1", 4, 1},
      {"\xEF\xBB\xBF[A\\B]\n \"n\"=ulong:1\n\t[A]\n  x\n", "indented1 indented2 indented3", 4, 0},
      {"[A]\n\"n\"=ulong:1\n[A\\B]\n\"n\"=ulong:1\n", "outofreach2", 4, 2},
      {"[A\\\\B\\C]\n[A\\\\B\\C]\n\"n\"=ulong:1\n\"m\"=ulong:1\n", "notsavable2", 4, 2},
      {"[A\\B]\n\"n\"=binary:x\\\\\n", "notsavable2", 2, 1},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.text);
    const StoreReport report = checkText(row.text);
    EXPECT_TRUE(report.exists);
    EXPECT_EQ(shown(report), row.shown);
    EXPECT_EQ(report.lineCount, row.lines);
    EXPECT_EQ(report.valueCount, row.values);
  }
}

TEST_F(StoreCheck, TellsTheUpperTwoLevelsOfKeysInOrder) {
  const StoreReport report = checkText("[B\\X]\n[A]\n[b\\Y\\Z]\n[A\\X]\n[B\\x\\W]\n");
  ASSERT_EQ(report.topKeys.size(), 2u);
  EXPECT_EQ(report.topKeys[0].name, "B");
  EXPECT_EQ(report.topKeys[0].subKeys, (std::vector<std::string>{"X", "Y"}));
  EXPECT_EQ(report.topKeys[1].name, "A");
  EXPECT_EQ(report.topKeys[1].subKeys, std::vector<std::string>{"X"});
}

TEST_F(StoreCheck, CountsLinesBeyondSixteenBitsAndCutsLongReports) {
  const std::string line = "\"n\"=Unknown:" + std::string(20000, 'x') + "\n";
  std::string text = "[A\\B]\n" + std::string(70000, '\n');
  for (std::size_t i = 0; i <= LTLib::kMostStoreWarnings; ++i) {
    text += "\"n\"=U:\n";
  }
  const StoreReport report = checkText(text + line + "[]\n");
  EXPECT_EQ(report.warnings.size(), LTLib::kMostStoreWarnings);
  EXPECT_EQ(report.warningCount, LTLib::kMostStoreWarnings + 2);
  EXPECT_EQ(report.warnings.front().line, 70002u);
  EXPECT_EQ(shown(*report.fault), "header" + std::to_string(70002 + LTLib::kMostStoreWarnings + 2));
  EXPECT_EQ(checkText("[A\\B]\n" + line).warnings.at(0).text,
            line.substr(0, LTLib::kStoreFaultText));
}

TEST_F(StoreCheck, ReportsWhatTheSystemRefuses) {
  const StoreReport absent = checkStoreFile(store());
  EXPECT_FALSE(absent.exists);
  EXPECT_EQ(shown(absent), "");

  EXPECT_EQ(shown(checkText("[A\\B]\n\"n\"=string:\"a\\\n" + std::string(70000, 'x'))),
            "!unended2");
  static auto systemRead = LTLib::Platform::fileCalls().read;
  static int readsLeft = 1;
  LTLib::Platform::fileCalls().read = [](LTLib::Platform::File& file, char* buffer,
                                         std::size_t capacity, std::size_t* taken) {
    return readsLeft-- > 0 ? systemRead(file, buffer, capacity, taken) : FileResult::kFailed;
  };
  EXPECT_EQ(shown(checkStoreFile(store())), "!readerror2");
  LTLib::Platform::fileCalls().openForReading = [](const char*) -> LTLib::Platform::File* {
    return nullptr;
  };
  EXPECT_EQ(shown(checkStoreFile(store())), "!unreadable0");
  EXPECT_TRUE(locksAreFree());

  fs::remove(store());
  fs::create_directory(store());
  EXPECT_EQ(shown(checkStoreFile(store())), "!nofile0");
  const StoreReport noLock = checkStoreFile(m_folder.path("absent/store.cfg"));
  EXPECT_EQ(shown(noLock), "!lock0");
  EXPECT_NE(noLock.fault->text.find("qsconfig.dat"), std::string::npos);
}

std::string randomText(std::mt19937& random) {
  constexpr const char* kParts[] = {"[A\\B]\n",
                                    "[A]\n",
                                    "[A\\B\\C]",
                                    "[",
                                    "]",
                                    "\\",
                                    "\\\\",
                                    "\"",
                                    "\n",
                                    "\n",
                                    "\"n\"=string:\"",
                                    "\"n\"=ulong:",
                                    "\"m\"=liststring:",
                                    "\"m\"=binary:",
                                    "x",
                                    "\"x\"",
                                    "=",
                                    ":",
                                    " ",
                                    "\\\n",
                                    "string"};
  std::string text;
  for (auto left = random() % 30; left > 0; --left) {
    text += kParts[random() % std::size(kParts)];
  }
  return text;
}

// The check passes the verdict that a load and a save of the same file come to.
TEST_F(StoreCheck, AgreesWithLoadAndSave) {
  const unsigned int seed = std::random_device()();
  std::mt19937 random(seed);
  for (int i = 0; i < 300; ++i) {
    const std::string text = randomText(random);
    SCOPED_TRACE("seed " + std::to_string(seed) + ":\n" + text);
    const StoreReport report = checkText(text);
    const LTLib::Testing::Reading reading = LTLib::Testing::readText(text);
    const bool whole = !reading.threw && reading.result == LTLib::detail::ReadResult::kWhole;
    ASSERT_EQ(report.loads(), whole);
    if (!whole) {
      continue;
    }
    EXPECT_EQ(report.lineCount, reading.lineCount);
    bool savable = true;
    try {
      (void)LTLib::Testing::writeText(*reading.root);
    } catch (const QSException&) {
      savable = false;
    }
    EXPECT_EQ(shown(report).find("notsavable") == std::string::npos, savable);
  }
}

TEST_F(StoreCheck, GuardKeepsOthersOutAndItsOwnThreadIn) {
  checkText("[A\\B]\n\"n\"=ulong:1\n");
  {
    const LTLib::StoreGuard guard(store());
    EXPECT_EQ(shown(checkStoreFile(store())), "");
    EXPECT_EQ(LTLib::Testing::OpenKey(m_manager, kMachine, "A\\B").setNumber("n", 2), 0);
    EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  }
  EXPECT_TRUE(locksAreFree());
  EXPECT_EQ(LTLib::Testing::readFile(store()), "[A\\B]\n\"n\"=ulong:2\n\n");
  EXPECT_THROW(LTLib::StoreGuard(m_folder.path("absent/store.cfg")), std::length_error);
  EXPECT_TRUE(locksAreFree());
}

}  // namespace
