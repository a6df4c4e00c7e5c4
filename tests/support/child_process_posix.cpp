#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "tests/support/child_process.h"

namespace LTLib::Testing {
namespace {

// The child's ends of the two pipes.
constexpr int kFromParent = 3;
constexpr int kToParent = 4;

void writeLine(int descriptor, const std::string& line) {
  const std::string text = line + '\n';
  if (::write(descriptor, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("a line to another process got lost");
  }
}

std::string readLine(int descriptor) {
  std::string line;
  char byte = 0;
  while (::read(descriptor, &byte, 1) == 1 && byte != '\n') {
    line += byte;
  }
  return line;
}

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;

  Pipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    readEnd = ends[0];
    writeEnd = ends[1];
  }
};

}  // namespace

void tellParent(const std::string& line) {
  writeLine(kToParent, line);
}

std::string hearParent() {
  return readLine(kFromParent);
}

void crash() {
  ::kill(::getpid(), SIGKILL);
  ::_exit(1);
}

std::string thisProgram() {
  return std::filesystem::read_symlink("/proc/self/exe").string();
}

struct ChildProcess::State {
  pid_t process = -1;
  int toChild = -1;
  int fromChild = -1;
};

ChildProcess::ChildProcess(const std::string& scenario, const std::vector<std::string>& arguments,
                           const std::string& program)
    : m_state(new State) {
  const Pipe down;
  const Pipe up;
  std::vector<std::string> words = {program, "--scenario=" + scenario};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);

  // High numbers in between, since an end may bear the very number that the other is to get.
  const int low = ::fcntl(down.readEnd, F_DUPFD_CLOEXEC, 10);
  const int high = ::fcntl(up.writeEnd, F_DUPFD_CLOEXEC, 10);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, low, kFromParent);
  posix_spawn_file_actions_adddup2(&actions, high, kToParent);
  const int error =
      posix_spawn(&m_state->process, words[0].c_str(), &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  for (const int descriptor : {low, high, down.readEnd, up.writeEnd}) {
    ::close(descriptor);
  }
  m_state->toChild = down.writeEnd;
  m_state->fromChild = up.readEnd;
  if (error != 0) {
    m_state->process = -1;
    throw std::runtime_error("no child process");
  }
}

ChildProcess::~ChildProcess() {
  if (m_state->process > 0) {
    kill();
    wait();
  }
  ::close(m_state->toChild);
  ::close(m_state->fromChild);
  delete m_state;
}

std::string ChildProcess::hear() {
  return readLine(m_state->fromChild);
}

void ChildProcess::tell(const std::string& line) {
  writeLine(m_state->toChild, line);
}

void ChildProcess::kill() {
  ::kill(m_state->process, SIGKILL);
}

int ChildProcess::wait() {
  int status = 0;
  ::waitpid(m_state->process, &status, 0);
  m_state->process = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace LTLib::Testing
