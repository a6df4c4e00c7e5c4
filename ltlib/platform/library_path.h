// Where the file of this library itself lies.
#ifndef LTLIB_PLATFORM_LIBRARY_PATH_H
#define LTLIB_PLATFORM_LIBRARY_PATH_H

#include <string>

namespace LTLib::Platform {

/// The path of a file of the given name beside the library's own file; the bare name, which
/// counts from the current directory, when the library's place cannot be told.
[[nodiscard]] std::string pathBesideLibrary(const std::string& fileName);

/// The path whose presence stands for a marker of the given name beside the library. On Windows a
/// library that does not bear its own name counts as marked: the path is then that of a module,
/// which is always there. Elsewhere it is pathBesideLibrary.
[[nodiscard]] std::string markerPath(const std::string& fileName);

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_LIBRARY_PATH_H
