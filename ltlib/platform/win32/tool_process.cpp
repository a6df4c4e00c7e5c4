#include "ltlib/platform/tool_process.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "ltlib/platform/win32/command_line.h"
#include "ltlib/platform/win32/system_words.h"

namespace LTLib::Platform {
namespace {

constexpr int kInput = 0;
constexpr int kOutput = 1;
constexpr int kErrors = 2;

bool isOpen(int descriptor) {
  return _get_osfhandle(descriptor) >= 0;
}

void denyToChildren(int descriptor) {
  SetHandleInformation(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), HANDLE_FLAG_INHERIT,
                       0);
}

// The runtime gives out the lowest number that is free, so that going upwards fills the gaps.
bool openIfClosed(int descriptor) {
  return isOpen(descriptor) || _open("NUL", _O_RDWR) == descriptor;
}

using Clock = std::chrono::steady_clock;

// A child that never stops writing must not take all memory; what comes after is read and dropped.
constexpr std::size_t kMostOutput = std::size_t{1} << 20;
constexpr DWORD kTickMilliseconds = 10;
// The codes of exceptions that nobody handled begin here.
constexpr DWORD kFirstException = 0xC0000000;

class Handle {
 public:
  explicit Handle(HANDLE handle = nullptr) : m_handle(handle) {}
  ~Handle() { close(); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  [[nodiscard]] HANDLE get() const { return m_handle; }
  [[nodiscard]] HANDLE* put() { return &m_handle; }
  void close() {
    if (m_handle != nullptr && m_handle != INVALID_HANDLE_VALUE) {
      CloseHandle(m_handle);
    }
    m_handle = nullptr;
  }

 private:
  HANDLE m_handle;
};

// A job whose processes the system ends with its last handle, which goes with this process. What the
// processes of the job start is none of it.
HANDLE makeJob() {
  const HANDLE job = CreateJobObjectA(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags =
      JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_SILENT_BREAKAWAY_OK;
  SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
  return job;
}

// Gives the system's error, or 0 and the child. A window that tells of a crash would keep the
// child from its end.
DWORD spawn(const std::string& program, const std::vector<std::string>& arguments, HANDLE input,
            HANDLE output, HANDLE job, Handle& child) {
  std::string line = commandLine(program, arguments);
  STARTUPINFOA start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = input;
  start.hStdOutput = output;
  start.hStdError = reinterpret_cast<HANDLE>(_get_osfhandle(kErrors));
  PROCESS_INFORMATION made{};
  const UINT before = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  const BOOL started = CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                                      CREATE_SUSPENDED, nullptr, nullptr, &start, &made);
  const DWORD error = started != 0 ? 0 : GetLastError();
  SetErrorMode(before);
  if (error == 0) {
    // Before its first instruction, so that it cannot outlive this process.
    AssignProcessToJobObject(job, made.hProcess);
    ResumeThread(made.hThread);
    CloseHandle(made.hThread);
    *child.put() = made.hProcess;
  }
  return error;
}

// Takes what the child has written so far.
void drain(HANDLE output, std::string& taken) {
  char piece[4096];
  DWORD waiting = 0;
  DWORD size = 0;
  while (PeekNamedPipe(output, nullptr, 0, nullptr, &waiting, nullptr) != 0 && waiting != 0 &&
         ReadFile(output, piece, sizeof piece, &size, nullptr) != 0) {
    const std::size_t room = kMostOutput - taken.size();
    taken.append(piece, std::min<std::size_t>(size, room));
  }
}

// What the child wrote has its system's line ends.
void joinLineEnds(std::string& text) {
  for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at)) {
    text.erase(at, 1);
  }
}

void describe(HANDLE child, ChildOutcome& outcome) {
  DWORD code = 0;
  GetExitCodeProcess(child, &code);
  outcome.end = code >= kFirstException ? ChildEnd::kCrashed : ChildEnd::kExited;
  outcome.code = static_cast<long>(code);
  if (outcome.end == ChildEnd::kCrashed) {
    char number[32];
    std::snprintf(number, sizeof number, "exception 0x%08lX", code);
    outcome.reason = number;
  }
}

// Looks for the end in short steps, since the pipe alone does not show it: a child may close its
// end and go on, or leave it to a process of its own.
void await(HANDLE child, HANDLE output, Clock::time_point limit, ChildOutcome& outcome) {
  for (;;) {
    // Asked ahead of the reading: what the child wrote before its end is then there to be read.
    const bool ended = WaitForSingleObject(child, kTickMilliseconds) == WAIT_OBJECT_0;
    drain(output, outcome.output);
    if (ended) {
      describe(child, outcome);
      return;
    }
    if (Clock::now() >= limit) {
      TerminateProcess(child, kFirstException);
      WaitForSingleObject(child, INFINITE);
      outcome.end = ChildEnd::kTimedOut;
      return;
    }
  }
}

ChildOutcome notStarted(DWORD error) {
  return {ChildEnd::kNotStarted, static_cast<long>(error), systemWords(error), {}};
}

}  // namespace

bool setEnvironmentVariable(const std::string& name, const std::string& value) noexcept {
  return _putenv_s(name.c_str(), value.c_str()) == 0;
}

std::FILE* divertStandardOutput() noexcept {
  const bool wasOpen = isOpen(kOutput);
  for (const int descriptor : {kInput, kOutput, kErrors}) {
    if (!openIfClosed(descriptor)) {
      return nullptr;
    }
  }
  const int data = _dup(kOutput);
  if (data < 0) {
    return nullptr;
  }
  denyToChildren(data);
  const bool diverted = _dup2(kErrors, kOutput) == 0;
  std::FILE* stream = diverted && wasOpen ? _fdopen(data, "w") : nullptr;
  if (stream == nullptr) {
    _close(data);
  }
  return stream;
}

int registryViewAccess(int bits) noexcept {
  BOOL isGuest = FALSE;  // a program of 32 bits on a system of 64
  const bool hasTwo =
      sizeof(void*) == 8 || (IsWow64Process(GetCurrentProcess(), &isGuest) != 0 && isGuest != 0);
  return !hasTwo ? 0 : bits == 32 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;
}

std::string programPath() {
  std::string path(32768, '\0');
  path.resize(GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

namespace {

constinit std::atomic<DWORD> s_limit{0};
constinit std::atomic<HANDLE> s_begun{nullptr};

DWORD WINAPI endWhenTimeIsUp(void*) {
  SetEvent(s_begun);
  Sleep(s_limit);
  TerminateProcess(GetCurrentProcess(), kFirstException);
  return 0;
}

}  // namespace

void limitLifetime(std::chrono::seconds limit) noexcept {
  s_limit = static_cast<DWORD>(std::chrono::milliseconds(limit).count());
  s_begun = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  const Handle thread(CreateThread(nullptr, 0, endWhenTimeIsUp, nullptr, 0, nullptr));
  // A library that hangs while it loads keeps threads from beginning.
  if (thread.get() != nullptr) {
    WaitForSingleObject(s_begun, INFINITE);
  }
}

ChildOutcome runChild(const std::string& program, const std::vector<std::string>& arguments,
                      std::chrono::milliseconds limit) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  // An input that is missing, unlike one that is empty, would be filled by the next file that opens.
  const Handle nothing(CreateFileA("NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   &inherited, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  Handle output;
  Handle childsOutput;
  if (CreatePipe(output.put(), childsOutput.put(), &inherited, 0) == 0) {
    return notStarted(GetLastError());
  }
  SetHandleInformation(output.get(), HANDLE_FLAG_INHERIT, 0);
  const Handle job(makeJob());
  Handle child;
  if (const DWORD error =
          spawn(program, arguments, nothing.get(), childsOutput.get(), job.get(), child);
      error != 0) {
    return notStarted(error);
  }
  childsOutput.close();
  ChildOutcome outcome;
  await(child.get(), output.get(), Clock::now() + limit, outcome);
  joinLineEnds(outcome.output);
  return outcome;
}

}  // namespace LTLib::Platform
