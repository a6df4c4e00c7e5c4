// The check of a store file and the guard that keeps others off it.
#include "ltlib/fileregistry/store/store_check.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <tuple>

#include "ltlib/fileregistry/store/store_guard.h"
#include "tests/support/store_fixture.h"
#include "tests/support/text_tree.h"

namespace {

using namespace LTLib::Testing;
using LTLib::checkStoreFile;
using LTLib::StoreReport;

std::string shown(const LTLib::StoreFault& fault) {
  constexpr const char* kNames[] = {
      "lock",         "noidentity", "link",    "nofile",  "unreadable", "readerror",
      "header",       "unended",    "empty",   "dropped", "nokey",      "indented",
      "outofreach",   "notsavable", "comment", "behind",  "otherform",  "repeatedkey",
      "repeatedname", "emptykey",   "longname"};
  return kNames[static_cast<int>(fault.kind)] + std::to_string(fault.line) + ' ';
}

// "warning1 warning2 fault ", each with its line.
std::string shown(const StoreReport& report) {
  std::string text;
  for (const LTLib::StoreFault& warning : report.warnings) {
    text += shown(warning);
  }
  return text + (report.fault ? shown(*report.fault) : "");
}

class StoreCheck : public StoreTest {
 protected:
  // A report whose verdict is the one that a load and a save of the same file come to.
  StoreReport check(const std::string& text) {
    restartWith(text);
    StoreReport report = checkStoreFile(store());
    const Reading reading = readText(text);
    EXPECT_EQ(report.loads(), reading.end == "whole") << text;
    const bool savable = shown(report).find("notsavable") == std::string::npos;
    const auto saved = writeText(*reading.tree);
    EXPECT_EQ(savable, !report.loads() || saved.has_value()) << text;
    // Nothing but empty lines and the line ends within a value may go without a word.
    if (report.loads() && saved && report.lostCount == 0) {
      std::istringstream lines(std::regex_replace(text, std::regex("\\\\\n"), ""));
      for (std::string line; std::getline(lines, line);) {
        EXPECT_NE(saved->find(line), std::string::npos) << text;
      }
    }
    return report;
  }
};

TEST_F(StoreCheck, FindsTheLineOfEachFault) {
  const std::tuple<const char*, const char*, std::size_t, std::size_t> cases[] = {
      {"; comment\n\n[A\\B]\n\"n\"=string:\"x\"\n\"u\"=ulong:1", "comment1 ", 5, 2},
      {"[A\\B]\n[]\n\"n\"=ulong:1\n", "header2 ", 2, 0},
      {"[A\\B]\n\n\"n\"=string:\"a\\\nb\\\nc\n\"m\"=ulong:1\n", "unended3 ", 5, 0},
      {"[A\\B]\n\"n\"=string:\"abc\\\n", "otherform2 ", 2, 1},
      {"[A\\B]\n\"n\"=string:abc\n\"m\"=ulong:\n", "empty2 empty3 ", 3, 2},
      {"[A\\B]\n\"\"=ulong:1\n\"n\"=Ulong:1\n\"n\n", "emptykey1 dropped2 dropped3 dropped4 ", 4, 0},
      {"\"n\"=ulong:1\\\n[A\\B]\n[A\\C]\n\"n\"=ulong:1\n", "nokey1 ", 4, 1},
      {"\xEF\xBB\xBF[A\\B]\n \"n\"=ulong:1\n\t[A]\n  x\n",
       "indented1 indented2 indented3 comment4 ", 4, 0},
      {"[A]\n\"n\"=ulong:1\n[A\\B]\n\"n\"=ulong:1\n", "outofreach2 ", 4, 2},
      {"[A\\\\B\\C]\n[A\\\\B\\C]\n\"n\"=ulong:1\n\"m\"=ulong:1\n",
       "otherform1 otherform2 repeatedkey2 notsavable2 ", 4, 2},
      {"[A\\B] ; c\n\"n\"=string:\"x\" ; c\n\"d\"=dword:7\n\"l\"=liststring:\"a\",\\\n\"b\"\n",
       "behind1 behind2 otherform3 ", 5, 3},
      {"[a\\b]\n\"n\"=ulong:1\n[A\\B]\n\"N\"=ulong:2\n", "repeatedkey3 repeatedname4 ", 4, 2},
      {"[A]\n[A\\B\\C]\n\"n\"=ulong:1\n[A\\B]\n[A\\D]\n", "emptykey5 ", 5, 1},
      {"[A\\B]\r\n\"t\"=string:\"a\\\r\nb\"\r\n; c\r\n", "comment4 ", 4, 1},
  };
  for (const auto& [text, faults, lines, values] : cases) {
    const StoreReport report = check(text);
    EXPECT_EQ(shown(report), faults) << text;
    EXPECT_EQ(report.lineCount, lines) << text;
    EXPECT_EQ(report.valueCount, values) << text;
  }
}

TEST_F(StoreCheck, KeepsSoManyWarningsAndTellsKeysInOrder) {
  std::string text = "[B\\X]\n[A]\n[b\\Y\\Z]\n[A\\X]\n" + std::string(70000, '\n');
  for (std::size_t i = 0; i <= LTLib::kMostStoreWarnings; ++i) {
    text += "\"n\"=U:\n";
  }
  const StoreReport report = check(text);
  EXPECT_EQ(report.topKeys.at(0).name + report.topKeys.at(1).name, "BA");
  EXPECT_EQ(report.topKeys[0].subKeys, (std::vector<std::string>{"X", "Y"}));
  EXPECT_EQ(report.warnings.size() + 5, report.warningCount);  // four keys hold nothing
  EXPECT_EQ(report.warnings.front().line, 70005u);
}

TEST_F(StoreCheck, GuardKeepsOthersOutAndItsOwnThreadIn) {
  restartWith("[A\\B]\n\"n\"=ulong:1\n");
  {
    const LTLib::StoreGuard guard(store());
    EXPECT_TRUE(checkStoreFile(store()).loads());
    EXPECT_EQ(OpenKey("A\\B").setNumber("n", 2) + save(), 0);
  }
  EXPECT_TRUE(locksAreFree());
  EXPECT_EQ(readFile(store()), "[A\\B]\n\"n\"=ulong:2\n\n");
}

}  // namespace
