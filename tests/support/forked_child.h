// A forked child of the test, for what starting a program anew cannot show.
#ifndef LTLIB_TESTS_SUPPORT_FORKED_CHILD_H
#define LTLIB_TESTS_SUPPORT_FORKED_CHILD_H

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace LTLib::Testing {

/// Asks `predicate` in a child. No destructor and no exit handler runs there.
template <typename Predicate>
pid_t startForked(Predicate predicate) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::_exit(predicate() ? 0 : 1);
  }
  return child;
}

/// Waits for a child's end and tells whether its predicate held.
inline bool heldInForked(pid_t child) {
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

template <typename Predicate>
bool holdsInForked(Predicate predicate) {
  return heldInForked(startForked(predicate));
}

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_FORKED_CHILD_H
