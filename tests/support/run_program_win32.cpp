#include <windows.h>

#include <filesystem>
#include <stdexcept>
#include <utility>

#include "tests/support/command_line_win32.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {
namespace {

HANDLE openForChild(const std::string& path, DWORD access, DWORD creation) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  return CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, creation,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Words reach a program as UTF-16, whatever the code page of this one is.
std::wstring wide(const std::string& text) {
  const auto size = static_cast<int>(text.size());
  std::wstring result(text.size(), L'\0');
  result.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), size)));
  return result;
}

}  // namespace

// Files take what the program writes, so that no pipe fills up while nobody reads.
struct RunningProgram::State {
  TempFolder written;
  HANDLE process = nullptr;
};

RunningProgram::RunningProgram(const std::string& program,
                               const std::vector<std::string>& arguments, const std::string& folder)
    : m_state(std::make_unique<State>()) {
  const std::string file = std::filesystem::absolute(program).make_preferred().string();
  std::wstring command = wide(commandLine(file, arguments));
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = openForChild("NUL", GENERIC_READ, OPEN_EXISTING);
  start.hStdOutput = openForChild(m_state->written.path("output"), GENERIC_WRITE, CREATE_ALWAYS);
  start.hStdError = openForChild(m_state->written.path("errors"), GENERIC_WRITE, CREATE_ALWAYS);
  PROCESS_INFORMATION made{};
  const bool runs = started([&] {
    return CreateProcessW(wide(file).c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                          wide(folder).c_str(), &start, &made);
  });
  const DWORD error = runs ? 0 : GetLastError();
  for (const HANDLE handle : {start.hStdInput, start.hStdOutput, start.hStdError}) {
    CloseHandle(handle);
  }
  if (!runs) {
    throw std::runtime_error("the program cannot be run: " + program + ": error " +
                             std::to_string(error));
  }
  CloseHandle(made.hThread);
  m_state->process = made.hProcess;
}

RunningProgram::RunningProgram(RunningProgram&&) noexcept = default;

RunningProgram::~RunningProgram() {
  if (m_state != nullptr && m_state->process != nullptr) {
    TerminateProcess(m_state->process, 1);
    WaitForSingleObject(m_state->process, INFINITE);
    CloseHandle(m_state->process);
  }
}

// The codes of crashes are negative numbers by themselves.
ProgramResult RunningProgram::wait() {
  DWORD code = 0;
  WaitForSingleObject(m_state->process, INFINITE);
  GetExitCodeProcess(m_state->process, &code);
  CloseHandle(std::exchange(m_state->process, nullptr));
  return {static_cast<int>(code), readFile(m_state->written.path("output")),
          readFile(m_state->written.path("errors"))};
}

ProgramResult runProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& folder) {
  return RunningProgram(program, arguments, folder).wait();
}

}  // namespace LTLib::Testing
