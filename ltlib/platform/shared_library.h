// Loading and unloading of shared libraries.
#ifndef LTLIB_PLATFORM_SHARED_LIBRARY_H
#define LTLIB_PLATFORM_SHARED_LIBRARY_H

#include <string>

namespace LTLib::Platform {

/// Loads a library, or counts one more load of a library that is in memory. Its static objects
/// are constructed on the calling thread before the call returns. Null on failure, which an empty
/// path always is; `reason` then receives the system's own words, in one line.
[[nodiscard]] void* loadSharedLibrary(const char* path, std::string& reason);

/// Undoes one load; with the last one the library's static objects are destroyed on the calling
/// thread before the call returns. Requires: a module that loadSharedLibrary gave.
void unloadSharedLibrary(void* module) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_SHARED_LIBRARY_H
