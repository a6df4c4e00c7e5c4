#include "ltlib/platform/tool_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace LTLib::Platform {
namespace {

// Gives a number that is closed to the null device. The system gives out the lowest number that
// is free, so that going upwards fills the gaps one by one.
bool openIfClosed(int descriptor) {
  return ::fcntl(descriptor, F_GETFD) != -1 || ::open("/dev/null", O_RDWR) == descriptor;
}

using Clock = std::chrono::steady_clock;

// A child that never stops writing must not take all memory; what comes after is read and dropped.
constexpr std::size_t kMostOutput = std::size_t{1} << 20;
constexpr int kTickMilliseconds = 10;

class Descriptor {
 public:
  explicit Descriptor(int number) : m_number(number) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int number() const { return m_number; }
  void close() {
    if (m_number >= 0) {
      ::close(m_number);
      m_number = -1;
    }
  }

 private:
  int m_number;
};

void awaitEnd(pid_t child) {
  while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
}

// Makes the forked child the program, or writes the system's error. The signal is asked for here
// since it outlives the change to the program; were the parent gone by then it would never come.
[[noreturn]] void becomeProgram(char* const* words, pid_t parent, int output, int errors) {
  if (::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && ::getppid() == parent &&
      ::close(STDIN_FILENO) == 0 && ::open("/dev/null", O_RDONLY) == STDIN_FILENO &&
      ::dup2(output, STDOUT_FILENO) == STDOUT_FILENO) {
    ::execv(words[0], words);
  }
  const int error = errno;
  static_cast<void>(!::write(errors, &error, sizeof error));
  ::_exit(1);
}

// Gives the system's error, or 0 and the child's number.
int spawn(const std::string& program, const std::vector<std::string>& arguments, int output,
          pid_t& child) {
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) {
    words.push_back(const_cast<char*>(argument.c_str()));
  }
  words.push_back(nullptr);
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    return errno;
  }
  const Descriptor errors(ends[0]);
  // Closed by the system when the child becomes the program, which is how its start shows.
  Descriptor childsErrors(ends[1]);
  const pid_t self = ::getpid();
  child = ::fork();
  if (child < 0) {
    return errno;
  }
  if (child == 0) {
    becomeProgram(words.data(), self, output, childsErrors.number());
  }
  childsErrors.close();
  // A program that runs has closed the pipe.
  int error = 0;
  while (::read(errors.number(), &error, sizeof error) < 0 && errno == EINTR) {
  }
  if (error != 0) {
    awaitEnd(child);
  }
  return error;
}

// Takes what the child has written so far; false when nothing more can come.
bool drain(int output, std::string& taken) {
  char piece[4096];
  for (;;) {
    const ssize_t size = ::read(output, piece, sizeof piece);
    if (size <= 0) {
      return size < 0 && (errno == EAGAIN || errno == EINTR);
    }
    const std::size_t room = kMostOutput - taken.size();
    taken.append(piece, std::min(static_cast<std::size_t>(size), room));
  }
}

void describe(int status, ChildOutcome& outcome) {
  if (WIFSIGNALED(status)) {
    outcome.end = ChildEnd::kCrashed;
    outcome.code = WTERMSIG(status);
    const char* const name = ::strsignal(WTERMSIG(status));
    outcome.reason = "signal " + std::to_string(outcome.code) +
                     (name != nullptr ? std::string(" (") + name + ')' : std::string());
  } else {
    outcome.end = ChildEnd::kExited;
    outcome.code = WEXITSTATUS(status);
  }
}

// Looks for the end in short steps, since the pipe alone does not show it: a child may close its
// end and go on, or leave it to a process of its own.
void await(pid_t child, int output, Clock::time_point limit, ChildOutcome& outcome) {
  bool open = true;
  for (;;) {
    int status = 0;
    // Asked ahead of the reading: what the child wrote before its end is then there to be read.
    const bool ended = ::waitpid(child, &status, WNOHANG) == child;
    open = open && drain(output, outcome.output);
    if (ended) {
      describe(status, outcome);
      return;
    }
    if (Clock::now() >= limit) {
      ::kill(child, SIGKILL);
      awaitEnd(child);
      outcome.end = ChildEnd::kTimedOut;
      return;
    }
    pollfd entry{output, POLLIN, 0};
    ::poll(&entry, open ? 1 : 0, kTickMilliseconds);
  }
}

ChildOutcome notStarted(int error) {
  return {ChildEnd::kNotStarted, error, ::strerror(error), {}};
}

}  // namespace

bool setEnvironmentVariable(const std::string& name, const std::string& value) noexcept {
  return ::setenv(name.c_str(), value.c_str(), 1) == 0;
}

std::FILE* divertStandardOutput() noexcept {
  const bool wasOpen = ::fcntl(STDOUT_FILENO, F_GETFD) != -1;
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (!openIfClosed(descriptor)) {
      return nullptr;
    }
  }
  const int data = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const bool diverted = ::dup2(STDERR_FILENO, STDOUT_FILENO) == STDOUT_FILENO;
  std::FILE* stream = data >= 0 && diverted && wasOpen ? ::fdopen(data, "w") : nullptr;
  if (stream == nullptr && data >= 0) {
    ::close(data);
  }
  return stream;
}

int registryViewAccess(int /*bits*/) noexcept {
  return 0;
}

std::string programPath() {
  std::string path(256, '\0');
  for (;;) {
    const ssize_t size = ::readlink("/proc/self/exe", path.data(), path.size());
    if (size < 0) {
      return {};
    }
    // A path that fills the room may have been cut.
    if (static_cast<std::size_t>(size) < path.size()) {
      path.resize(static_cast<std::size_t>(size));
      return path;
    }
    path.resize(2 * path.size());
  }
}

void limitLifetime(std::chrono::seconds limit) noexcept {
  // Whoever started this process may have had the signal ignored or held back.
  sigset_t alarms;
  ::sigemptyset(&alarms);
  ::sigaddset(&alarms, SIGALRM);
  ::signal(SIGALRM, SIG_DFL);
  ::sigprocmask(SIG_UNBLOCK, &alarms, nullptr);
  ::alarm(static_cast<unsigned int>(limit.count()));
}

ChildOutcome runChild(const std::string& program, const std::vector<std::string>& arguments,
                      std::chrono::milliseconds limit) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    return notStarted(errno);
  }
  Descriptor output(ends[0]);
  Descriptor input(ends[1]);
  // A process that the child leaves behind may keep the pipe open for ever.
  ::fcntl(output.number(), F_SETFL, O_NONBLOCK);
  // A caller that ignores this signal passes that on, and the system would forget the child's end.
  ::signal(SIGCHLD, SIG_DFL);
  pid_t child = -1;
  if (const int error = spawn(program, arguments, input.number(), child); error != 0) {
    return notStarted(error);
  }
  input.close();
  ChildOutcome outcome;
  await(child, output.number(), Clock::now() + limit, outcome);
  return outcome;
}

}  // namespace LTLib::Platform
