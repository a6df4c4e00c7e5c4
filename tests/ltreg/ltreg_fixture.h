// The tool as a child process, over a store in a folder of the test's.
#ifndef LTLIB_TESTS_LTREG_LTREG_FIXTURE_H
#define LTLIB_TESTS_LTREG_LTREG_FIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <iomanip>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

using Store = std::optional<std::string>;  // the text of a store file; none where it is absent

class LtregTest : public testing::Test {
 protected:
  static constexpr char kStore[] = "HKEY_LOCAL_MACHINE.cfg";
  static constexpr char kOne[] = "[A\\B]\n\"n\"=ulong:1\n\n";

  /// Starts a program in the folder, whose file kStore the machine root then is. A word of the line
  /// with blanks stands in single quotes, and @ stands for the key of kOne.
  [[nodiscard]] RunningProgram start(const std::string& line, const std::string& program) const {
    std::istringstream rest(std::regex_replace(line, std::regex("@"), R"(HKLM\A\B)"));
    std::vector<std::string> words;
    for (std::string word; rest >> std::quoted(word, '\'', '\0');) {
      words.push_back(word);
    }
    return {program, words, m_folder.path()};
  }
  [[nodiscard]] ProgramResult run(const std::string& line) const {
    return start(line, m_program).wait();
  }

  // These run the tool over a store and look at all that it writes and leaves; `errors` is a part.
  // The layout of JSON does not count.
  void shows(const std::string& line, const std::string& output, const Store& store) const {
    check(line, {0, output, ""}, store, store);
  }
  void changes(const std::string& line, const Store& before, const Store& after) const {
    check(line, {}, before, after);
  }
  void fails(int exitCode, const std::string& line, const std::string& errors, const Store& store,
             const std::string& output = "") const {
    check(line, {exitCode, output, errors}, store, store);
  }

  static void contains(const std::string& text, const std::vector<std::string>& parts) {
    for (const std::string& part : parts) {
      EXPECT_NE(text.find(part), std::string::npos) << part << "\nin\n" << text.substr(0, 4000);
    }
  }

  /// The store; none if it does not exist. And one that has this line in the place of kOne's.
  [[nodiscard]] Store store() const {
    const std::string path = m_folder.path(kStore);
    return std::filesystem::exists(path) ? Store(readFile(path)) : std::nullopt;
  }
  static std::string holding(const std::string& line) { return "[A\\B]\n" + line + "\n\n"; }

  TempFolder m_folder;
  std::string m_program = LTREG_PROGRAM;

 private:
  void check(const std::string& line, const ProgramResult& expected, const Store& before,
             const Store& after) const {
    SCOPED_TRACE(line.substr(0, 200) + " over " + before.value_or("no store"));
    std::filesystem::remove(m_folder.path(kStore));
    std::filesystem::remove(m_folder.path(kStore) + "_old");
    if (before) {
      m_folder.write(kStore, *before);
    }
    ProgramResult result = run(line);
    if (line.find("--json") != std::string::npos) {
      result.output = std::regex_replace(result.output, std::regex("\n *"), "");
    }
    EXPECT_EQ(result.exitCode, expected.exitCode);
    EXPECT_EQ(result.output, expected.output);
    EXPECT_EQ(result.errors.empty(), expected.errors.empty()) << result.errors;
    EXPECT_NE(result.errors.find(expected.errors), std::string::npos) << result.errors;
    EXPECT_EQ(store(), after);
  }

  const ScopedStores m_noStores{nullptr};
  const ScopedEnvironment m_noTrace{"LTTRACER", std::nullopt};
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_LTREG_LTREG_FIXTURE_H
