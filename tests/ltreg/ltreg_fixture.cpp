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

void LtregTest::runs(const std::vector<Case>& cases) const {
  for (const Case& row : cases) {
    SCOPED_TRACE(row.line.substr(0, 200) + " over " + row.before.value_or("no store"));
    std::filesystem::remove(m_folder.path(kStore));
    std::filesystem::remove(m_folder.path(kStore) + "_old");
    if (row.before) {
      m_folder.write(kStore, *row.before);
    }
    ProgramResult result = run(row.line);
    if (row.line.find("--json") != std::string::npos) {
      result.output = std::regex_replace(result.output, std::regex("\n *"), "");
    }
    EXPECT_EQ(result.exitCode, row.exitCode);
    EXPECT_EQ(result.output, row.output);
    EXPECT_EQ(result.errors.empty(), row.errors.empty()) << result.errors;
    EXPECT_NE(result.errors.find(row.errors), std::string::npos) << result.errors;
    EXPECT_EQ(store(), row.after.value_or(row.before));
  }
}

}  // namespace LTLib::Testing
