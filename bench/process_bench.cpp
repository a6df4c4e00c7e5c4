// Runs a command without its output and prints what its process took: seconds that passed, seconds
// of processor time, bytes at the peak, and how it ended. The system counts the memory of whoever
// starts a process into its peak, so that this program is small.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <initializer_list>

namespace {

double now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

}  // namespace

int main(int count, char** words) {
  if (count < 2) {
    return 2;
  }
  const double begin = now();
  const pid_t child = fork();
  if (child == 0) {
    const int nothing = open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      dup2(nothing, stream);
    }
    execvp(words[1], words + 1);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  std::printf("wall %.9f\ncpu %.6f\npeak %ld\nstatus %d\n", now() - begin,
              seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss * 1024,
              WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}
