// The limit is the process's own, whatever the system waits with.
#include <atomic>

#include "ltlib/platform/lock_wait.h"

namespace LTLib::Platform {
namespace {

constinit std::atomic<std::int64_t> s_limit{0};  // in milliseconds; 0 for none

}  // namespace

void limitLockWaits(std::chrono::milliseconds limit) noexcept {
  s_limit.store(limit.count(), std::memory_order_relaxed);
}

std::optional<std::chrono::milliseconds> lockWaitLimit() noexcept {
  const std::int64_t limit = s_limit.load(std::memory_order_relaxed);
  return limit > 0 ? std::optional(std::chrono::milliseconds(limit)) : std::nullopt;
}

}  // namespace LTLib::Platform
