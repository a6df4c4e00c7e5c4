#include "ltlib/platform/thread_lock.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <new>
#include <thread>

#include "ltlib/platform/linux/linux_thread_lock.h"

namespace LTLib::Platform {
namespace {

enum State : std::uint32_t { kFree, kHeld, kHeldWithWaiters };

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t) &&
              std::atomic<std::uint32_t>::is_always_lock_free);

// Where the system keeps its data on a thread tells threads apart: one instruction, where a number
// costs a call, and an object of our own at a place as quick to find would keep the library from
// being loaded late.
inline const void* thisThread() noexcept {
#if defined(__x86_64__) || defined(__i386__) || defined(__aarch64__)
  return __builtin_thread_pointer();
#else
  return reinterpret_cast<const void*>(pthread_self());
#endif
}

// Without a limit, or for that long at most. Comes back at once where the lock is not contended any
// longer, and may come back for no reason: callers look again.
void sleepWhileContended(std::atomic<std::uint32_t>& state, const timespec* limit) noexcept {
  syscall(SYS_futex, &state, FUTEX_WAIT_PRIVATE, kHeldWithWaiters, limit, nullptr, 0);
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

// With one processor the holder cannot get on while another thread spins. No static object of a
// function keeps the answer: a fork that crosses with its making would leave the child to wait.
bool spinningHelps() noexcept {
  constinit static std::atomic<unsigned int> s_processors{0};
  unsigned int processors = s_processors.load(std::memory_order_relaxed);
  if (processors == 0) {
    processors = std::max(std::thread::hardware_concurrency(), 1u);
    s_processors.store(processors, std::memory_order_relaxed);
  }
  return processors > 1;
}

bool takeBySpinning(ThreadLock& lock) noexcept {
  const unsigned int tries = spinningHelps() ? lock.spinCount : 0;
  for (unsigned int i = 0; i < tries; ++i) {
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
    sleepWhileContended(lock.state, nullptr);
  }
}

void becomeOwner(ThreadLock& lock) noexcept {
  lock.owner.store(thisThread(), std::memory_order_relaxed);
}

bool enterAgain(ThreadLock& lock) noexcept {
  if (lock.reentries == std::numeric_limits<unsigned int>::max()) {
    return false;
  }
  ++lock.reentries;
  return true;
}

// Not inline: the loops in here need registers that have to be saved first. enterThreadLock would
// then save them at each call, though nearly every lock is free when it is wanted.
[[gnu::noinline]] bool waitAndEnter(ThreadLock& lock) noexcept {
  if (!takeBySpinning(lock)) {
    takeBySleeping(lock);
  }
  becomeOwner(lock);
  return true;
}

}  // namespace

ThreadLock* createThreadLock(unsigned int spinCount) noexcept {
  return new (std::nothrow) ThreadLock(spinCount);
}

bool enterThreadLock(ThreadLock& lock) noexcept {
  if (tryTake(lock)) {
    becomeOwner(lock);
    return true;
  }
  return holdsThreadLock(lock) ? enterAgain(lock) : waitAndEnter(lock);
}

// The owner goes first: after the exchange the lock may be another thread's already, or freed with
// what it is part of. A wake-up goes by the address alone, and finds nobody there at worst.
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

const void* currentThread() noexcept {
  return thisThread();
}

bool tryEnterThreadLock(ThreadLock& lock) noexcept {
  if (tryTake(lock)) {
    becomeOwner(lock);
    return true;
  }
  return holdsThreadLock(lock) && enterAgain(lock);
}

bool enterThreadLockOrNap(ThreadLock& lock) noexcept {
  constexpr timespec kMillisecond{0, 1000000};
  if (lock.state.exchange(kHeldWithWaiters, std::memory_order_acquire) != kFree) {
    sleepWhileContended(lock.state, &kMillisecond);
    return false;
  }
  becomeOwner(lock);
  return true;
}

// No order is needed: only this thread writes its own mark, and no other's equals it.
bool holdsThreadLock(const ThreadLock& lock) noexcept {
  return lock.owner.load(std::memory_order_relaxed) == thisThread();
}

void resetThreadLock(ThreadLock& lock) noexcept {
  lock.reentries = 0;
  lock.owner.store(nullptr, std::memory_order_relaxed);
  // Whoever slept for the lock is no thread of this process.
  lock.state.store(kFree, std::memory_order_relaxed);
}

}  // namespace LTLib::Platform
