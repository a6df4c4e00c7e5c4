// The tool as a child process, over a store in a folder of the test's.
#ifndef LTLIB_TESTS_LTREG_LTREG_FIXTURE_H
#define LTLIB_TESTS_LTREG_LTREG_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/environment.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

using Words = std::vector<std::string>;

/// One run of the tool and what it has to come to.
struct LtregCase {
  Words arguments;
  int exitCode = 0;
  std::string output;                         // the whole of standard output
  std::string errors;                         // a part of standard error; empty wants it empty
  std::optional<std::string> before;          // the store; absent without
  std::optional<std::string> after = before;  // as it was, unless told
};

class LtregTest : public testing::Test {
 protected:
  static constexpr char kStore[] = "HKEY_LOCAL_MACHINE.cfg";

  LtregTest();

  /// Runs the tool in the folder, whose file kStore the machine root then is.
  [[nodiscard]] ProgramResult run(const Words& arguments) const;
  [[nodiscard]] RunningProgram start(const Words& arguments) const;

  void check(const LtregCase& row) const;

  /// The store's bytes; nothing if it does not exist.
  [[nodiscard]] std::optional<std::string> store() const;

  TempFolder m_folder;

 private:
  std::vector<std::unique_ptr<ScopedEnvironment>> m_environment;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_LTREG_LTREG_FIXTURE_H
