#include "ltlib/platform/tool_process.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdlib>

namespace LTLib::Platform {
namespace {

constexpr int kInput = 0;
constexpr int kOutput = 1;
constexpr int kErrors = 2;

bool isOpen(int descriptor) {
  return _get_osfhandle(descriptor) >= 0;
}

void denyToChildren(int descriptor) {
  SetHandleInformation(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), HANDLE_FLAG_INHERIT,
                       0);
}

// The runtime gives out the lowest number that is free, so that going upwards fills the gaps.
bool openIfClosed(int descriptor) {
  return isOpen(descriptor) || _open("NUL", _O_RDWR) == descriptor;
}

}  // namespace

bool setEnvironmentVariable(const std::string& name, const std::string& value) noexcept {
  return _putenv_s(name.c_str(), value.c_str()) == 0;
}

std::FILE* divertStandardOutput() noexcept {
  const bool wasOpen = isOpen(kOutput);
  for (const int descriptor : {kInput, kOutput, kErrors}) {
    if (!openIfClosed(descriptor)) {
      return nullptr;
    }
  }
  const int data = _dup(kOutput);
  if (data < 0) {
    return nullptr;
  }
  denyToChildren(data);
  const bool diverted = _dup2(kErrors, kOutput) == 0;
  std::FILE* stream = diverted && wasOpen ? _fdopen(data, "w") : nullptr;
  if (stream == nullptr) {
    _close(data);
  }
  return stream;
}

}  // namespace LTLib::Platform
