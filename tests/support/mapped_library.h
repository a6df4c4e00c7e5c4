// Whether a library is in the memory of this process.
#ifndef LTLIB_TESTS_SUPPORT_MAPPED_LIBRARY_H
#define LTLIB_TESTS_SUPPORT_MAPPED_LIBRARY_H

#include <string>

namespace LTLib::Testing {

[[nodiscard]] bool isMapped(const std::string& path);

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_MAPPED_LIBRARY_H
