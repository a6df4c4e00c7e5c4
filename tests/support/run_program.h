// Programs run by a test as a user runs them, with what they wrote.
#ifndef LTLIB_TESTS_SUPPORT_RUN_PROGRAM_H
#define LTLIB_TESTS_SUPPORT_RUN_PROGRAM_H

#include <memory>
#include <string>
#include <vector>

namespace LTLib::Testing {

struct ProgramResult {
  int exitCode = 0;  // negative when the program did not exit by itself, as by a crash
  std::string output;
  std::string errors;
};

/// A program that runs in a folder, with this process's environment and nothing on standard input.
class RunningProgram {
 public:
  RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                 const std::string& folder);

  /// Kills a program that was not waited for.
  ~RunningProgram();
  RunningProgram(RunningProgram&&) noexcept;

  ProgramResult wait();

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

[[nodiscard]] ProgramResult runProgram(const std::string& program,
                                       const std::vector<std::string>& arguments,
                                       const std::string& folder);

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_RUN_PROGRAM_H
