#include "ltlib/platform/shared_library.h"

#include <dlfcn.h>

#include <algorithm>

namespace LTLib::Platform {
namespace {

std::string inOneLine(const char* text) {
  std::string line = text != nullptr ? text : "";
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

}  // namespace

void* loadSharedLibrary(const char* path, std::string& reason) {
  // An empty path would open the program itself.
  if (*path == '\0') {
    reason = "the path is empty";
    return nullptr;
  }
  void* const module = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    reason = inOneLine(::dlerror());
  }
  return module;
}

void unloadSharedLibrary(void* module) noexcept {
  static_cast<void>(::dlclose(module));
}

}  // namespace LTLib::Platform
