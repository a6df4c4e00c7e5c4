// Where the file of this library itself lies.
#ifndef LTLIB_PLATFORM_LIBRARY_PATH_H
#define LTLIB_PLATFORM_LIBRARY_PATH_H

#include <string>

namespace LTLib::Platform {

/// The path of a file of the given name beside the library's own file; the bare name, which
/// counts from the current directory, when the library's place cannot be told.
[[nodiscard]] std::string pathBesideLibrary(const std::string& fileName);

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_LIBRARY_PATH_H
