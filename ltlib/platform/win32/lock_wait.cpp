#include "ltlib/platform/lock_wait.h"

namespace LTLib::Platform {

std::string namedLockPlace(const std::string& name) {
  return name;
}

// The system tells nobody who owns a mutex or a lock on a file.
std::optional<LockHolder> holderOfNamedLock(const std::string& /*name*/) {
  return std::nullopt;
}

std::optional<LockHolder> holderOfFileLock(const std::string& /*path*/) {
  return std::nullopt;
}

}  // namespace LTLib::Platform
