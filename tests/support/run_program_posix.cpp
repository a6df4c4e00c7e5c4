#include "tests/support/run_program.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

// Files take what the program writes, so that no pipe fills up while nobody reads.
struct RunningProgram::State {
  TempFolder written;
  pid_t process = -1;
};

RunningProgram::RunningProgram(const std::string& program,
                               const std::vector<std::string>& arguments, const std::string& folder)
    : m_state(std::make_unique<State>()) {
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);

  const std::string output = m_state->written.path("output");
  const std::string errors = m_state->written.path("errors");
  constexpr int kFresh = O_WRONLY | O_CREAT | O_TRUNC;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), kFresh, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), kFresh, 0600);
  posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  const int error =
      posix_spawn(&m_state->process, program.c_str(), &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    m_state->process = -1;
    throw std::runtime_error("the program cannot be run: " + program);
  }
}

RunningProgram::RunningProgram(RunningProgram&&) noexcept = default;

RunningProgram::~RunningProgram() {
  if (m_state != nullptr && m_state->process > 0) {
    ::kill(m_state->process, SIGKILL);
    ::waitpid(m_state->process, nullptr, 0);
  }
}

ProgramResult RunningProgram::wait() {
  int status = 0;
  ::waitpid(m_state->process, &status, 0);
  m_state->process = -1;
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
          readFile(m_state->written.path("output")), readFile(m_state->written.path("errors"))};
}

ProgramResult runProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& folder) {
  return RunningProgram(program, arguments, folder).wait();
}

}  // namespace LTLib::Testing
