// The operating system's registry for tests on systems that have none: a tree in memory with the
// answers of Windows, as far as the tests look. A program that has the source has it in the place
// of the library's own side, which does nothing.
#ifndef LTLIB_TESTS_SUPPORT_OS_REGISTRY_DOUBLE_H
#define LTLIB_TESTS_SUPPORT_OS_REGISTRY_DOUBLE_H

namespace LTLib::Testing {

/// Called ahead of each query of a value: where a test lets others change it.
inline void (*beforeQuery)() = nullptr;

/// How many keys are open in it.
inline int openHandles = 0;

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_OS_REGISTRY_DOUBLE_H
