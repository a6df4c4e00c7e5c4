#include "ltlib/platform/thread_lock.h"

#include <windows.h>

#include <new>

namespace LTLib::Platform {

struct ThreadLock {
  CRITICAL_SECTION section;
};

ThreadLock* createThreadLock(unsigned int spinCount) noexcept {
  auto* lock = new (std::nothrow) ThreadLock;
  if (lock != nullptr && InitializeCriticalSectionAndSpinCount(&lock->section, spinCount) == 0) {
    delete lock;
    return nullptr;
  }
  return lock;
}

bool enterThreadLock(ThreadLock& lock) noexcept {
  EnterCriticalSection(&lock.section);
  return true;
}

void leaveThreadLock(ThreadLock& lock) noexcept {
  LeaveCriticalSection(&lock.section);
}

void destroyThreadLock(ThreadLock* lock) noexcept {
  if (lock != nullptr) {
    DeleteCriticalSection(&lock->section);
    delete lock;
  }
}

}  // namespace LTLib::Platform
