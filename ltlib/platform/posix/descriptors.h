// Opening files with numbers that nobody else lays claim to.
#ifndef LTLIB_PLATFORM_POSIX_DESCRIPTORS_H
#define LTLIB_PLATFORM_POSIX_DESCRIPTORS_H

#include <sys/types.h>

namespace LTLib::Platform {

/// As open, with a descriptor of 3 or more that is closed on exec. Where a standard stream is
/// closed its number would be the next one, and what others print would end up in the file.
[[nodiscard]] int openAboveStandardStreams(const char* path, int flags, mode_t mode) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_POSIX_DESCRIPTORS_H
