#include "ltlib/platform/library_path.h"

#include <windows.h>

#include <cstring>

namespace LTLib::Platform {
namespace {

constexpr char kLibraryName[] = "ltlib.dll";
constexpr DWORD kPathSize = 261;

// In lower case, so that the library's name is found however it is spelled on the disk. A library
// that was renamed, or is linked into a program, has no module of that name: the path is then the
// program's. Empty when there is no answer.
std::string loweredModulePath() {
  char path[kPathSize + 1] = {};
  if (GetModuleFileNameA(GetModuleHandleA(kLibraryName), path, kPathSize) == 0) {
    return {};
  }
  return _strlwr(path);
}

}  // namespace

std::string pathBesideLibrary(const std::string& fileName) {
  const std::string path = loweredModulePath();
  std::size_t end = path.find(kLibraryName);
  if (end == std::string::npos) {
    const std::size_t separator = path.rfind('\\');
    end = separator == std::string::npos ? 0 : separator + 1;
  }
  return path.substr(0, end) + fileName;
}

std::string markerPath(const std::string& fileName) {
  const std::string path = loweredModulePath();
  return path.empty() || path.find(kLibraryName) != std::string::npos ? pathBesideLibrary(fileName)
                                                                      : path;
}

}  // namespace LTLib::Platform
