// Child processes for tests: the test program starts itself again to play a scenario, and the two
// sides speak in lines.
//
// A scenario is a function that a test program registers by name:
//   const Scenario s_holder("holder", [](const std::vector<std::string>& arguments) { ...; return
//   0; });
#ifndef LTLIB_TESTS_SUPPORT_CHILD_PROCESS_H
#define LTLIB_TESTS_SUPPORT_CHILD_PROCESS_H

#include <string>
#include <vector>

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

/// In the child: ends the process at once as a crash would, with no destructor and no handler run.
[[noreturn]] void crash();

/// The path of the file that this process was started from.
[[nodiscard]] std::string thisProgram();

/// A running child.
class ChildProcess {
 public:
  /// Starts `program`, which is this test program or a copy of it.
  ChildProcess(const std::string& scenario, const std::vector<std::string>& arguments,
               const std::string& program = thisProgram());

  /// Kills a child that was not waited for.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// The child's next line; empty when it ended.
  [[nodiscard]] std::string hear();
  void tell(const std::string& line);

  /// Ends the child as kill -9 does.
  void kill();

  /// Waits for the end and gives the exit code, or -1 when the child did not exit by itself.
  int wait();

 private:
  struct State;
  State* m_state;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_CHILD_PROCESS_H
