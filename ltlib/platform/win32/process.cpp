#include "ltlib/platform/process.h"

#include <windows.h>

#include <cstdlib>

namespace LTLib::Platform {

std::uint32_t processId() noexcept {
  return GetCurrentProcessId();
}

// A process gets more rights than its starter only by the system's own service, which does not pass
// the environment on.
const char* trustedEnvironment(const char* name) noexcept {
  return std::getenv(name);
}

MonotonicTime monotonicTime() noexcept {
  LARGE_INTEGER ticks;
  LARGE_INTEGER ticksPerSecond;
  QueryPerformanceCounter(&ticks);
  // The frequency is fixed at the start of the system, so that it needs no keeping.
  QueryPerformanceFrequency(&ticksPerSecond);
  return {static_cast<std::uint64_t>(ticks.QuadPart),
          static_cast<std::uint64_t>(ticksPerSecond.QuadPart)};
}

}  // namespace LTLib::Platform
