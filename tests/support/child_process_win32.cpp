#include <windows.h>

#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "tests/support/child_process.h"
#include "tests/support/command_line_win32.h"

namespace LTLib::Testing {
namespace {

// The child's ends of the two pipes, as numbers: handles keep them when they are inherited.
constexpr char kFromParent[] = "LTLIB_TEST_FROM_PARENT";
constexpr char kToParent[] = "LTLIB_TEST_TO_PARENT";

// What stands for an end by force.
constexpr UINT kKilled = 0xC0000001;

HANDLE handleOf(const char* variable) {
  const char* number = std::getenv(variable);
  return reinterpret_cast<HANDLE>(number != nullptr ? std::strtoull(number, nullptr, 10) : 0);
}

void passOn(const char* variable, HANDLE handle) {
  const auto number = reinterpret_cast<unsigned long long>(handle);
  SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  SetEnvironmentVariableA(variable, std::to_string(number).c_str());
}

void writeLine(HANDLE pipe, const std::string& line) {
  const std::string text = line + '\n';
  DWORD written = 0;
  if (WriteFile(pipe, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) == 0) {
    throw std::runtime_error("a line to another process got lost");
  }
}

std::string readLine(HANDLE pipe) {
  std::string line;
  char byte = 0;
  DWORD count = 0;
  while (ReadFile(pipe, &byte, 1, &count, nullptr) != 0 && count == 1 && byte != '\n') {
    line += byte;
  }
  return line;
}

struct Pipe {
  HANDLE readEnd = nullptr;
  HANDLE writeEnd = nullptr;

  Pipe() {
    if (CreatePipe(&readEnd, &writeEnd, nullptr, 0) == 0) {
      throw std::runtime_error("no pipe");
    }
  }
};

}  // namespace

void tellParent(const std::string& line) {
  writeLine(handleOf(kToParent), line);
}

std::string hearParent() {
  return readLine(handleOf(kFromParent));
}

void crash() {
  TerminateProcess(GetCurrentProcess(), kKilled);
  std::abort();
}

std::string thisProgram() {
  char path[MAX_PATH] = {};
  GetModuleFileNameA(nullptr, path, sizeof path);
  return path;
}

struct ChildProcess::State {
  HANDLE process = nullptr;
  HANDLE toChild = nullptr;
  HANDLE fromChild = nullptr;
};

ChildProcess::ChildProcess(const std::string& scenario, const std::vector<std::string>& arguments,
                           const std::string& program)
    : m_state(new State) {
  std::vector<std::string> words = {"--scenario=" + scenario};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::string command = commandLine(program, words);

  const Pipe down;
  const Pipe up;
  m_state->toChild = down.writeEnd;
  m_state->fromChild = up.readEnd;
  passOn(kFromParent, down.readEnd);
  passOn(kToParent, up.writeEnd);
  STARTUPINFOA start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION made{};
  const bool runs = started([&] {
    return CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                          &start, &made);
  });
  CloseHandle(down.readEnd);
  CloseHandle(up.writeEnd);
  if (!runs) {
    throw std::runtime_error("no child process: error " + std::to_string(GetLastError()));
  }
  CloseHandle(made.hThread);
  m_state->process = made.hProcess;
}

ChildProcess::~ChildProcess() {
  if (m_state->process != nullptr) {
    kill();
    wait();
  }
  CloseHandle(m_state->toChild);
  CloseHandle(m_state->fromChild);
  delete m_state;
}

std::string ChildProcess::hear() {
  return readLine(m_state->fromChild);
}

void ChildProcess::tell(const std::string& line) {
  writeLine(m_state->toChild, line);
}

void ChildProcess::kill() {
  TerminateProcess(m_state->process, kKilled);
}

int ChildProcess::wait() {
  DWORD code = 0;
  WaitForSingleObject(m_state->process, INFINITE);
  GetExitCodeProcess(m_state->process, &code);
  CloseHandle(std::exchange(m_state->process, nullptr));
  return code == kKilled ? -1 : static_cast<int>(code);
}

}  // namespace LTLib::Testing
