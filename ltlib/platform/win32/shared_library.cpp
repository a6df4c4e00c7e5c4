#include "ltlib/platform/shared_library.h"

#include "ltlib/platform/win32/system_words.h"

namespace LTLib::Platform {
namespace {

// The number by which this compiler's exceptions travel through the system, whose loader stops them
// and takes the library out again.
constexpr DWORD kException = 0x20474343;

}  // namespace

void* loadSharedLibrary(const char* path, std::string& reason, std::exception_ptr& /*thrown*/) {
  if (*path == '\0') {
    reason = "the path is empty";
    return nullptr;
  }
  const HMODULE module = LoadLibraryA(path);
  if (module == nullptr) {
    const DWORD error = GetLastError();
    reason = error == kException ? "an exception left its static objects" : systemWords(error);
  }
  return module;
}

void unloadSharedLibrary(void* module) noexcept {
  FreeLibrary(static_cast<HMODULE>(module));
}

}  // namespace LTLib::Platform
