#include "ltlib/platform/terminal.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace LTLib::Platform {
namespace {

pid_t s_pager = -1;

// The pager takes the end of the pipe for its input, and the interrupt that this process ignores.
bool spawnPager(const std::string& command, int input, int screen) {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawnattr_init(&attributes);
  ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, screen, STDOUT_FILENO);
  sigset_t interrupt;
  ::sigemptyset(&interrupt);
  ::sigaddset(&interrupt, SIGINT);
  ::posix_spawnattr_setsigdefault(&attributes, &interrupt);
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  // Else it would show the escape sequences of colours, and wait where all fits on the screen.
  std::string text = "export LESS=\"${LESS-FRX}\"; " + command;
  char shell[] = "sh";
  char option[] = "-c";
  char* const words[] = {shell, option, text.data(), nullptr};
  const int error = ::posix_spawn(&s_pager, "/bin/sh", &actions, &attributes, words, environ);
  ::posix_spawnattr_destroy(&attributes);
  ::posix_spawn_file_actions_destroy(&actions);
  return error == 0;
}

}  // namespace

const char* const kUsualPager = "if command -v less >/dev/null; then exec less; fi; exec more";

bool isTerminal(std::FILE* stream) noexcept {
  return stream != nullptr && ::isatty(::fileno(stream)) == 1;
}

bool takesEscapes(std::FILE* stream) noexcept {
  return isTerminal(stream);
}

bool writeText(std::FILE* stream, std::string_view text) noexcept {
  return std::fwrite(text.data(), 1, text.size(), stream) == text.size();
}

std::FILE* startPager(const std::string& command, std::FILE* screen) noexcept {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    return nullptr;
  }
  const bool started = spawnPager(command, ends[0], ::fileno(screen));
  ::close(ends[0]);
  std::FILE* input = started ? ::fdopen(ends[1], "w") : nullptr;
  if (input == nullptr) {
    ::close(ends[1]);
    return nullptr;
  }
  // A pager goes on after an interrupt, and nothing else may read the keyboard meanwhile.
  ::signal(SIGINT, SIG_IGN);
  return input;
}

void endPager(std::FILE* input) noexcept {
  std::fclose(input);
  while (::waitpid(s_pager, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace LTLib::Platform
