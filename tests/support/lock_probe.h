// Looks at a named mutex from outside: whether it is held, and that it is free and in order.
#ifndef LTLIB_TESTS_SUPPORT_LOCK_PROBE_H
#define LTLIB_TESTS_SUPPORT_LOCK_PROBE_H

#include <string>

namespace LTLib::Testing {

/// Whether somebody holds the mutex of that name, found out without waiting.
[[nodiscard]] bool isHeld(const std::string& name);

/// Fails the test unless the mutex is free, and not abandoned.
void expectFree(const std::string& name);

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_LOCK_PROBE_H
