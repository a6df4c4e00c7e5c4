#include "ltlib/platform/shared_library.h"

#include <algorithm>

#include "ltlib/platform/unicode.h"
#include "ltlib/platform/win32/system_words.h"

namespace LTLib::Platform {
namespace {

// The number by which this compiler's exceptions travel through the system, whose loader stops them
// and takes the library out again.
constexpr DWORD kException = 0x20474343;

bool isAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= 0; });
}

std::wstring wide(const std::string& text) {
  std::u16string units(text.size(), u'\0');
  units.resize(utf8ToUtf16(text.data(), text.size(), units.data(), units.size()));
  return {units.begin(), units.end()};
}

// The registry hands out UTF-8, in which a path beyond ASCII is none of the code page's.
HMODULE load(const std::string& path) {
  const HMODULE module = LoadLibraryA(path.c_str());
  const bool isElsewhere = module == nullptr && GetLastError() == ERROR_MOD_NOT_FOUND;
  return isElsewhere && !isAscii(path) ? LoadLibraryW(wide(path).c_str()) : module;
}

}  // namespace

void* loadSharedLibrary(const char* path, std::string& reason, std::exception_ptr& /*thrown*/) {
  if (*path == '\0') {
    reason = "the path is empty";
    return nullptr;
  }
  const HMODULE module = load(path);
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
