// A forked child of the test, for what starting a program anew cannot show.
#ifndef LTLIB_TESTS_SUPPORT_FORKED_CHILD_H
#define LTLIB_TESTS_SUPPORT_FORKED_CHILD_H

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace LTLib::Testing {

/// Runs `function` in a child, whose exit code is the function's result. No destructor and no exit
/// handler runs there.
template <typename Function>
pid_t startForked(Function function) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::_exit(function());
  }
  return child;
}

/// Waits for a child's end and gives its exit code, or -1 when it did not exit by itself.
inline int waitForForked(pid_t child) {
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

template <typename Function>
int runForked(Function function) {
  return waitForForked(startForked(function));
}

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_FORKED_CHILD_H
