// Loading and unloading of shared libraries.
#ifndef LTLIB_PLATFORM_SHARED_LIBRARY_H
#define LTLIB_PLATFORM_SHARED_LIBRARY_H

#include <exception>
#include <string>

namespace LTLib::Platform {

/// Loads a library, or counts one more load of a library that is in memory. Its static objects
/// are constructed on the calling thread before the call returns. Null on failure, which an empty
/// path always is; `reason` then receives the system's own words, in one line. The path is UTF-8, or
/// in the system's code page for narrow text.
///
/// An exception that leaves a static object is put into `thrown` where the system lets it through:
/// the result is then the module that the system keeps and counts as loaded, or null. It may have
/// locked the system's loader for all threads but this one, for good: on another thread every load
/// fails from then on, and an unload does nothing.
[[nodiscard]] void* loadSharedLibrary(const char* path, std::string& reason,
                                      std::exception_ptr& thrown);

/// Undoes one load; with the last one the library's static objects are destroyed on the calling
/// thread before the call returns. Requires: a module that loadSharedLibrary gave.
void unloadSharedLibrary(void* module) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_SHARED_LIBRARY_H
