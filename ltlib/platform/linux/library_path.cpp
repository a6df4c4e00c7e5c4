#include "ltlib/platform/library_path.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <climits>

namespace LTLib::Platform {
namespace {

// Only an address inside this library tells which file it came from.
const char s_anchor = 0;

// The loader notes each library's folder when it brings the library in, so that a later change
// of the current directory misleads nobody. It notes none for a program's own
// file, whose name is empty there, and must not be asked then.
std::string loadedFrom() {
  Dl_info info{};
  void* map = nullptr;
  char origin[PATH_MAX] = {};
  if (::dladdr1(&s_anchor, &info, &map, RTLD_DL_LINKMAP) == 0 || map == nullptr ||
      *static_cast<const link_map*>(map)->l_name == '\0' ||
      ::dlinfo(map, RTLD_DI_ORIGIN, origin) != 0) {
    return {};
  }
  return origin;
}

std::string programDirectory() {
  char path[PATH_MAX];
  // For a library that is linked into the program.
  const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0) {
    return {};
  }
  const std::string whole(path, static_cast<std::size_t>(length));
  return whole.substr(0, whole.rfind('/'));
}

}  // namespace

std::string pathBesideLibrary(const std::string& fileName) {
  std::string directory = loadedFrom();
  if (directory.empty()) {
    directory = programDirectory();
  }
  return directory.empty() ? fileName : directory + '/' + fileName;
}

std::string markerPath(const std::string& fileName) {
  return pathBesideLibrary(fileName);
}

}  // namespace LTLib::Platform
