// Opening files with numbers that nobody else lays claim to, and locking them.
#ifndef LTLIB_PLATFORM_LINUX_DESCRIPTORS_H
#define LTLIB_PLATFORM_LINUX_DESCRIPTORS_H

#include <sys/types.h>

namespace LTLib::Platform {

/// As open, with a descriptor of 3 or more that is closed on exec. Where a standard stream is
/// closed its number would be the next one, and what others print would end up in the file.
[[nodiscard]] int openAboveStandardStreams(const char* path, int flags, mode_t mode) noexcept;

/// The same for a descriptor that is open already, if it is; its number may change.
[[nodiscard]] int aboveStandardStreams(int first) noexcept;

/// Waits for the kernel's lock on an open file, as long as lock_wait.h allows, while a fork by another
/// thread waits for nobody. Gives 0 or the system's number, ETIMEDOUT at the end of the time.
[[nodiscard]] int waitForKernelLock(int descriptor) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_LINUX_DESCRIPTORS_H
