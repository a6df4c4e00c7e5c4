#include "ltlib/platform/process.h"

#include <stdlib.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

namespace LTLib::Platform {
namespace {

using CachedId = std::atomic<std::uint32_t>;

// A page that the kernel zeroes in every forked child, however it was forked and whichever code
// runs first there. Null where the kernel has no such thing.
CachedId* mapCache() noexcept {
  const std::size_t size = sizeof(CachedId);
  void* page = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) {
    return nullptr;
  }
  if (madvise(page, size, MADV_WIPEONFORK) != 0) {
    munmap(page, size);
    return nullptr;
  }
  return static_cast<CachedId*>(page);
}

// Mapped when the library comes in; until then there is none.
CachedId* const s_cache = mapCache();

std::uint32_t askSystem() noexcept {
  return static_cast<std::uint32_t>(getpid());
}

}  // namespace

std::uint32_t processId() noexcept {
  if (s_cache == nullptr) {
    return askSystem();
  }
  std::uint32_t id = s_cache->load(std::memory_order_relaxed);
  if (id == 0) {
    id = askSystem();
    s_cache->store(id, std::memory_order_relaxed);
  }
  return id;
}

const char* trustedEnvironment(const char* name) noexcept {
  return ::secure_getenv(name);
}

MonotonicTime monotonicTime() noexcept {
  constexpr std::uint64_t kNanosecondsPerSecond = 1000000000u;
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return {static_cast<std::uint64_t>(now.tv_sec) * kNanosecondsPerSecond +
              static_cast<std::uint64_t>(now.tv_nsec),
          kNanosecondsPerSecond};
}

}  // namespace LTLib::Platform
