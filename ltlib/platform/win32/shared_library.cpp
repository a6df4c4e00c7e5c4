#include "ltlib/platform/shared_library.h"

#include <windows.h>

namespace LTLib::Platform {
namespace {

// The system's words end in a line end and may hold more of them.
std::string textOf(DWORD error) {
  char words[512];
  const DWORD length = FormatMessageA(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
      nullptr, error, 0, words, sizeof words, nullptr);
  std::string text(words, length);
  text.erase(text.find_last_not_of(' ') + 1);
  return text.empty() ? "error " + std::to_string(error) : text;
}

}  // namespace

void* loadSharedLibrary(const char* path, std::string& reason) {
  if (*path == '\0') {
    reason = "the path is empty";
    return nullptr;
  }
  const HMODULE module = LoadLibraryA(path);
  if (module == nullptr) {
    reason = textOf(GetLastError());
  }
  return module;
}

void unloadSharedLibrary(void* module) noexcept {
  FreeLibrary(static_cast<HMODULE>(module));
}

}  // namespace LTLib::Platform
