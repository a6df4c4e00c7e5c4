#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdlib>
#include <stdexcept>

#include "ltlib/platform/win32/command_line.h"
#include "tests/support/system.h"

namespace LTLib::Testing {
namespace {

// What stands for an end by force, as a number negative as those of crashes are.
constexpr UINT kKilled = 0xC0000001;

HANDLE handleOf(std::FILE* stream) {
  return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

}  // namespace

// The C runtime takes an empty value for a removal, so that one is cut short where it lies;
// children take theirs from the system.
void setEnvironment(const std::string& name, const std::optional<std::string>& value) {
  const bool empty = value.has_value() && value->empty();
  _putenv_s(name.c_str(), empty ? "x" : value.value_or("").c_str());
  if (empty) {
    *std::getenv(name.c_str()) = '\0';
    SetEnvironmentVariableA(name.c_str(), "");
  }
}

std::pair<std::FILE*, std::FILE*> makePipe() {
  int ends[2];
  if (_pipe(ends, 4096, _O_TEXT | _O_NOINHERIT) != 0) {
    throw std::runtime_error("no pipe");
  }
  return {_fdopen(ends[0], "r"), _fdopen(ends[1], "w")};
}

Process::Process(const Start& start) {
  STARTUPINFOA info{};
  info.cb = sizeof info;
  info.dwFlags = STARTF_USESTDHANDLES;
  info.hStdInput = handleOf(start.input);
  info.hStdOutput = handleOf(start.output);
  info.hStdError =
      start.errors != nullptr ? handleOf(start.errors) : GetStdHandle(STD_ERROR_HANDLE);
  for (const HANDLE handle : {info.hStdInput, info.hStdOutput, info.hStdError}) {
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  }
  PROCESS_INFORMATION made{};
  const std::string file = std::filesystem::absolute(start.program).make_preferred().string();
  std::string line = Platform::commandLine(file, start.arguments);
  bool runs = false;
  // Once in some thousand times Wine cannot, for reasons of its own that do not last.
  for (int tries = 0; !runs && tries < 5; ++tries) {
    runs = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                          start.folder.c_str(), &info, &made) != 0;
  }
  for (std::FILE* stream : {start.input, start.output, start.errors}) {
    stream != nullptr ? std::fclose(stream) : 0;
  }
  if (!runs) {
    throw std::runtime_error("the program cannot be run: " + start.program);
  }
  CloseHandle(made.hThread);
  m_handle = reinterpret_cast<std::intptr_t>(made.hProcess);
}

void Process::kill() const {
  TerminateProcess(reinterpret_cast<HANDLE>(m_handle), kKilled);
}

int Process::wait() {
  const HANDLE process = reinterpret_cast<HANDLE>(std::exchange(m_handle, 0));
  DWORD code = 0;
  WaitForSingleObject(process, INFINITE);
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  return static_cast<int>(code);
}

}  // namespace LTLib::Testing
