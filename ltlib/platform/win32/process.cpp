#include "ltlib/platform/process.h"

#include <windows.h>

namespace LTLib::Platform {

std::uint32_t processId() noexcept {
  return GetCurrentProcessId();
}

MonotonicTime monotonicTime() noexcept {
  LARGE_INTEGER ticks;
  LARGE_INTEGER ticksPerSecond;
  QueryPerformanceCounter(&ticks);
  QueryPerformanceFrequency(&ticksPerSecond);
  return {static_cast<std::uint64_t>(ticks.QuadPart),
          static_cast<std::uint64_t>(ticksPerSecond.QuadPart)};
}

}  // namespace LTLib::Platform
