#include "ltlib/platform/shared_library.h"

#include "ltlib/platform/win32/system_words.h"

namespace LTLib::Platform {
void* loadSharedLibrary(const char* path, std::string& reason) {
  if (*path == '\0') {
    reason = "the path is empty";
    return nullptr;
  }
  const HMODULE module = LoadLibraryA(path);
  if (module == nullptr) {
    reason = systemWords(GetLastError());
  }
  return module;
}

void unloadSharedLibrary(void* module) noexcept {
  FreeLibrary(static_cast<HMODULE>(module));
}

}  // namespace LTLib::Platform
