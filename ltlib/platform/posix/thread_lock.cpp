#include "ltlib/platform/thread_lock.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <limits>
#include <new>
#include <thread>

#include "ltlib/platform/posix/posix_thread_lock.h"

namespace LTLib::Platform {
namespace {

enum State : std::uint32_t { kFree, kHeld, kHeldWithWaiters };

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t) &&
              std::atomic<std::uint32_t>::is_always_lock_free);

// Where the system keeps its data on the thread tells threads apart: one instruction, where a number
// costs a call, and an object of our own at a place as quick to find would keep the library from
// being loaded late.
const void* currentThread() noexcept {
#if defined(__x86_64__) || defined(__i386__) || defined(__aarch64__)
  return __builtin_thread_pointer();
#else
  return reinterpret_cast<const void*>(pthread_self());
#endif
}

void sleepWhileContended(std::atomic<std::uint32_t>& state) noexcept {
  syscall(SYS_futex, &state, FUTEX_WAIT_PRIVATE, kHeldWithWaiters, nullptr, nullptr, 0);
}

[[gnu::noinline]] void wakeOne(std::atomic<std::uint32_t>& state) noexcept {
  syscall(SYS_futex, &state, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

void relax() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

// Reads first: that spares a re-entrant owner a failing exchange, and while others hold the lock
// it leaves them their cache line.
bool tryTake(ThreadLock& lock) noexcept {
  std::uint32_t expected = kFree;
  return lock.state.load(std::memory_order_relaxed) == kFree &&
         lock.state.compare_exchange_strong(expected, kHeld, std::memory_order_acquire,
                                            std::memory_order_relaxed);
}

bool takeBySpinning(ThreadLock& lock) noexcept {
  for (unsigned int i = 0; i < lock.spinCount; ++i) {
    if (tryTake(lock)) {
      return true;
    }
    relax();
  }
  return false;
}

// A thread that slept cannot know whether others still do, so it takes the lock as contended.
void takeBySleeping(ThreadLock& lock) noexcept {
  while (lock.state.exchange(kHeldWithWaiters, std::memory_order_acquire) != kFree) {
    sleepWhileContended(lock.state);
  }
}

void becomeOwner(ThreadLock& lock) noexcept {
  lock.owner.store(currentThread(), std::memory_order_relaxed);
}

// Apart from the front, so that a lock that nobody else wants costs no saved registers.
[[gnu::noinline]] bool enterHeldLock(ThreadLock& lock) noexcept {
  if (holdsThreadLock(lock)) {
    if (lock.reentries == std::numeric_limits<unsigned int>::max()) {
      return false;
    }
    ++lock.reentries;
    return true;
  }
  if (!takeBySpinning(lock)) {
    takeBySleeping(lock);
  }
  becomeOwner(lock);
  return true;
}

// With one processor the holder cannot get on while another thread spins.
bool spinningHelps() noexcept {
  static const bool helps = std::thread::hardware_concurrency() > 1;
  return helps;
}

}  // namespace

ThreadLock* createThreadLock(unsigned int spinCount) noexcept {
  return new (std::nothrow) ThreadLock(spinningHelps() ? spinCount : 0);
}

bool enterThreadLock(ThreadLock& lock) noexcept {
  if (!tryTake(lock)) {
    return enterHeldLock(lock);
  }
  becomeOwner(lock);
  return true;
}

void leaveThreadLock(ThreadLock& lock) noexcept {
  if (lock.reentries > 0) {
    --lock.reentries;
    return;
  }
  lock.owner.store(nullptr, std::memory_order_relaxed);
  if (lock.state.exchange(kFree, std::memory_order_release) == kHeldWithWaiters) {
    wakeOne(lock.state);
  }
}

void destroyThreadLock(ThreadLock* lock) noexcept {
  delete lock;
}

bool holdsThreadLock(const ThreadLock& lock) noexcept {
  return lock.owner.load(std::memory_order_relaxed) == currentThread();
}

void resetThreadLock(ThreadLock& lock) noexcept {
  lock.reentries = 0;
  lock.owner.store(nullptr, std::memory_order_relaxed);
  lock.state.store(kFree, std::memory_order_relaxed);
}

}  // namespace LTLib::Platform
