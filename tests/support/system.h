// Which of the two kinds of system the tests run on, for the few that ask more than both can give.
#ifndef LTLIB_TESTS_SUPPORT_SYSTEM_H
#define LTLIB_TESTS_SUPPORT_SYSTEM_H

#include <filesystem>

namespace LTLib::Testing {

inline constexpr bool kOnWindows = std::filesystem::path::preferred_separator == '\\';

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_SYSTEM_H
