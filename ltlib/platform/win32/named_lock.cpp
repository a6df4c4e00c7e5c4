#include "ltlib/platform/named_lock.h"

#include "ltlib/platform/lock_wait.h"
#include "ltlib/platform/win32/owned_handle.h"

namespace LTLib::Platform {

struct NamedLock {
  HANDLE handle;
};

NamedLock* openNamedLock(const std::string& name, std::string&) noexcept {
  return ownHandle<NamedLock>(CreateMutexA(nullptr, FALSE, name.c_str()));
}

NamedLockWait waitForNamedLock(NamedLock& lock) noexcept {
  const auto limit = lockWaitLimit();
  switch (WaitForSingleObject(lock.handle, limit ? static_cast<DWORD>(limit->count()) : INFINITE)) {
    case WAIT_OBJECT_0:
      return {NamedLockStatus::kObtained, 0};
    case WAIT_ABANDONED:
      return {NamedLockStatus::kAbandoned, 0};
    case WAIT_TIMEOUT:
      return {NamedLockStatus::kFailed, ERROR_TIMEOUT};
    case WAIT_FAILED:
      return {NamedLockStatus::kFailed, GetLastError()};
    default:
      return {NamedLockStatus::kUnknown, 0};
  }
}

void releaseNamedLock(NamedLock& lock) noexcept {
  ReleaseMutex(lock.handle);
}

void closeNamedLock(NamedLock* lock) noexcept {
  disposeHandle(lock);
}

}  // namespace LTLib::Platform
