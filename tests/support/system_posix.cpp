#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/support/system.h"

namespace LTLib::Testing {

void setEnvironment(const std::string& name, const std::optional<std::string>& value) {
  value.has_value() ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
}

std::pair<std::FILE*, std::FILE*> makePipe() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  return {::fdopen(ends[0], "r"), ::fdopen(ends[1], "w")};
}

Process::Process(const Start& start) {
  std::vector<char*> words{const_cast<char*>(start.program.c_str())};
  for (const std::string& argument : start.arguments) {
    words.push_back(const_cast<char*>(argument.c_str()));
  }
  words.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addchdir_np(&actions, start.folder.c_str());
  int target = STDIN_FILENO;
  for (std::FILE* stream : {start.input, start.output, start.errors}) {
    if (stream != nullptr) {
      ::posix_spawn_file_actions_adddup2(&actions, ::fileno(stream), target++);
    }
  }
  pid_t process = 0;
  const int error =
      ::posix_spawn(&process, start.program.c_str(), &actions, nullptr, words.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  for (std::FILE* stream : {start.input, start.output, start.errors}) {
    stream != nullptr ? std::fclose(stream) : 0;
  }
  if (error != 0) {
    throw std::runtime_error("the program cannot be run: " + start.program);
  }
  m_handle = process;
}

void Process::kill() const {
  if (m_handle != 0) {
    ::kill(static_cast<pid_t>(m_handle), SIGKILL);
  }
}

int Process::wait() {
  int status = 0;
  ::waitpid(static_cast<pid_t>(std::exchange(m_handle, 0)), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace LTLib::Testing
