// Child processes for tests: the test program starts itself again to play a scenario, and the two
// sides speak in lines; or another program runs as a user runs it.
//
// A scenario is a function that a test program registers by name:
//   const Scenario s_holder("holder", [](const std::vector<std::string>& arguments) { ...; return
//   0; });
#ifndef LTLIB_TESTS_SUPPORT_CHILD_PROCESS_H
#define LTLIB_TESTS_SUPPORT_CHILD_PROCESS_H

#include <memory>
#include <string>
#include <vector>

#include "tests/support/system.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

/// What a scenario does, with its arguments; its result is the child's exit code.
using ScenarioFunction = int (*)(const std::vector<std::string>& arguments);

/// Makes a scenario known. For objects in static storage.
class Scenario {
 public:
  Scenario(const char* name, ScenarioFunction function);
};

/// In the child: tells the parent one line, or hears one; empty when the parent closed.
void tellParent(const std::string& line);
[[nodiscard]] std::string hearParent();

/// The path of the file that this process was started from.
[[nodiscard]] std::string thisProgram();

/// A running child.
class ChildProcess {
 public:
  /// Starts `program`, which is this test program or a copy of it.
  ChildProcess(const std::string& scenario, std::vector<std::string> arguments,
               const std::string& program = thisProgram());
  /// Kills a child that was not waited for.
  ~ChildProcess();

  /// The child's next line; empty when it ended. What else it printed is shown.
  [[nodiscard]] std::string hear();
  void tell(const std::string& line);
  void kill() const { m_process->kill(); }
  /// Waits for the end and gives the exit code, negative when the child did not exit by itself.
  int wait() { return m_process->wait(); }

 private:
  std::FILE* m_fromChild = nullptr;
  std::FILE* m_toChild = nullptr;
  std::unique_ptr<Process> m_process;
};

struct ProgramResult {
  int exitCode = 0;  // negative when the program did not exit by itself, as by a crash
  std::string output;
  std::string errors;
};

/// A program that runs in a folder, with this process's environment and nothing on standard input.
class RunningProgram {
 public:
  RunningProgram(const std::string& program, std::vector<std::string> arguments,
                 const std::string& folder);
  ProgramResult wait();

 private:
  std::unique_ptr<TempFolder> m_written;
  Process m_process;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_CHILD_PROCESS_H
