#include "ltlib/platform/thread_lock.h"

#include <windows.h>

#include <cstdint>
#include <new>

#include "ltlib/platform/fork.h"

namespace LTLib::Platform {

struct ThreadLock {
  CRITICAL_SECTION section;
};

namespace {

constexpr std::size_t kProcessLocks = static_cast<std::size_t>(ProcessLock::kSoleWork) + 1;

// Without a destructor, since late callers come after all exit handlers.
struct ProcessLocks {
  ThreadLock locks[kProcessLocks];

  ProcessLocks() noexcept {
    for (ThreadLock& lock : locks) {
      InitializeCriticalSectionAndSpinCount(&lock.section, kSpinCount);
    }
  }
};

}  // namespace

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

const void* currentThread() noexcept {
  return reinterpret_cast<const void*>(static_cast<std::uintptr_t>(GetCurrentThreadId()));
}

// Made by the first caller, which may come before the static objects of this file.
ThreadLock& processLock(ProcessLock which) noexcept {
  static ProcessLocks s_all;
  return s_all.locks[static_cast<std::size_t>(which)];
}

}  // namespace LTLib::Platform
