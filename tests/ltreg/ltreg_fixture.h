// The tool as a child process, over a store in a folder of the test's.
#ifndef LTLIB_TESTS_LTREG_LTREG_FIXTURE_H
#define LTLIB_TESTS_LTREG_LTREG_FIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

using Store = std::optional<std::string>;  // the text of a store file; none where it is absent

/// What a command line does over a store. The layout of JSON does not count.
struct Case {
  std::string line;
  int exitCode = 0;
  std::string output;
  std::string errors;  // a part of them; nothing is written there where it is empty
  Store before;
  std::optional<Store> after{};  // the same store where nothing is said
};

class LtregTest : public testing::Test {
 protected:
  static constexpr char kStore[] = "HKEY_LOCAL_MACHINE.cfg";
  static constexpr char kOne[] = "[A\\B]\n\"n\"=ulong:1\n\n";

  /// Starts a program in the folder, whose file kStore the machine root then is. A word of the line
  /// with blanks stands in single quotes, and @ stands for the key of kOne.
  [[nodiscard]] RunningProgram start(const std::string& line, const std::string& program) const;
  [[nodiscard]] ProgramResult run(const std::string& line) const {
    return start(line, m_program).wait();
  }

  /// Runs the tool and looks at all that it writes and leaves.
  void runs(const std::vector<Case>& cases) const;

  // Rows of one kind.
  void shows(const std::string& line, const std::string& output, const Store& store) const {
    runs({{line, 0, output, "", store}});
  }
  void changes(const std::string& line, const Store& before, const Store& after) const {
    runs({{line, 0, "", "", before, after}});
  }
  void fails(int exitCode, const std::string& line, const std::string& errors, const Store& store,
             const std::string& output = "") const {
    runs({{line, exitCode, output, errors, store}});
  }

  static void contains(const std::string& text, const std::vector<std::string>& parts);

  /// The store; none if it does not exist. And one that has this line in the place of kOne's.
  [[nodiscard]] Store store() const;
  static std::string holding(const std::string& line) { return "[A\\B]\n" + line + "\n\n"; }

  TempFolder m_folder;
  std::string m_program = LTREG_PROGRAM;

 private:
  const ScopedStores m_noStores{nullptr};
  const ScopedEnvironment m_noTrace{"LTTRACER", std::nullopt};
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_LTREG_LTREG_FIXTURE_H
