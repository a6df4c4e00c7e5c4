#include "tests/ltreg/ltreg_fixture.h"

#include <filesystem>

namespace LTLib::Testing {

LtregTest::LtregTest() {
  for (const char* name : {"HKEY_CURRENT_USER", "HKEY_CURRENT_CONFIG", "HKEY_USERS",
                           "HKEY_CLASSES_ROOT", "HKEY_LOCAL_MACHINE", "LTTRACER"}) {
    m_environment.push_back(std::make_unique<ScopedEnvironment>(name, std::nullopt));
  }
}

RunningProgram LtregTest::start(const Words& arguments) const {
  return {LTREG_PROGRAM, arguments, m_folder.path()};
}

ProgramResult LtregTest::run(const Words& arguments) const {
  return start(arguments).wait();
}

std::optional<std::string> LtregTest::store() const {
  const std::string path = m_folder.path(kStore);
  return std::filesystem::exists(path) ? std::optional(readFile(path)) : std::nullopt;
}

void LtregTest::check(const LtregCase& row) const {
  std::string label;
  for (const std::string& word : row.arguments) {
    label.append(word.substr(0, 80)) += ' ';
  }
  SCOPED_TRACE(label + "over " + row.before.value_or("no store"));
  if (row.before) {
    m_folder.write(kStore, *row.before);
  } else {
    std::filesystem::remove(m_folder.path(kStore));
  }
  const ProgramResult result = run(row.arguments);
  EXPECT_EQ(result.exitCode, row.exitCode);
  EXPECT_EQ(result.output, row.output);
  EXPECT_EQ(result.errors.empty(), row.errors.empty()) << result.errors;
  EXPECT_NE(result.errors.find(row.errors), std::string::npos) << result.errors;
  EXPECT_EQ(store(), row.after);
}

}  // namespace LTLib::Testing
