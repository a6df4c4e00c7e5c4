#include "tests/ltreg/ltreg_fixture.h"

#include <iomanip>
#include <regex>
#include <sstream>

namespace LTLib::Testing {

RunningProgram LtregTest::start(const std::string& line, const std::string& program) const {
  std::istringstream rest(std::regex_replace(line, std::regex("@"), R"(HKLM\A\B)"));
  std::vector<std::string> words;
  for (std::string word; rest >> std::quoted(word, '\'', '\0');) {
    words.push_back(word);
  }
  return {program, words, m_folder.path()};
}

void LtregTest::contains(const std::string& text, const std::vector<std::string>& parts) {
  for (const std::string& part : parts) {
    EXPECT_NE(text.find(part), std::string::npos) << part << "\nin\n" << text.substr(0, 4000);
  }
}

Store LtregTest::store() const {
  const std::string path = m_folder.path(kStore);
  return std::filesystem::exists(path) ? Store(readFile(path)) : std::nullopt;
}

void LtregTest::check(const std::string& line, const ProgramResult& expected, const Store& before,
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

}  // namespace LTLib::Testing
