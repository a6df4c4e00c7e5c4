#include "ltlib/platform/thread_lock.h"

#include <linux/futex.h>
#include <linux/membarrier.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>
#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

#include <algorithm>
#include <array>
#include <ctime>
#include <limits>
#include <new>
#include <thread>

#include "ltlib/platform/linux/linux_thread_lock.h"

namespace LTLib::Platform {
namespace {

enum State : std::uint32_t { kFree, kHeld };

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t) &&
              std::atomic<std::uint32_t>::is_always_lock_free);

// Where the system keeps its data on a thread tells threads apart: one instruction, where a number
// costs a call, and an object of our own at a place as quick to find would keep the library from
// being loaded late.
inline const void* threadMark() noexcept {
#if defined(__x86_64__) || defined(__i386__) || defined(__aarch64__)
  return __builtin_thread_pointer();
#else
  return reinterpret_cast<const void*>(pthread_self());
#endif
}

// A lock is given back by a plain store and a look at who sleeps, at half the cost of an exchange
// that tells both at once. Nothing orders the store ahead of the look, so that whoever is about to
// sleep sees to that: it counts itself, and then has the system put a barrier into every running
// thread of the process. A thread that had looked before has by then let its store be seen, and the
// lock is found free; one that looks later sees the count. The counts lie outside the locks, since
// a lock that was given back may be gone already; locks that share one are woken in vain, no more.
constinit std::array<std::atomic<std::uint32_t>, 64> s_sleepers{};

std::atomic<std::uint32_t>& sleepersOf(const ThreadLock& lock) noexcept {
  constexpr std::uintptr_t kBytesApart = 32;
  return s_sleepers[reinterpret_cast<std::uintptr_t>(&lock) / kBytesApart % s_sleepers.size()];
}

bool barrierInAllThreads() noexcept {
  return syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) == 0;
}

// Only what has been asked for once works; that takes long where there are threads already.
bool ensureBarrierInAllThreads() noexcept {
  return barrierInAllThreads() ||
         (syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) == 0 &&
          barrierInAllThreads());
}

// Stands around the sleep of a thread that wants the lock.
class Sleeper {
 public:
  explicit Sleeper(ThreadLock& lock) noexcept : m_lock(lock), m_count(sleepersOf(lock)) {
    m_count.fetch_add(1, std::memory_order_seq_cst);
    m_isSeen = ensureBarrierInAllThreads();
  }
  ~Sleeper() { m_count.fetch_sub(1, std::memory_order_relaxed); }
  Sleeper(const Sleeper&) = delete;
  Sleeper& operator=(const Sleeper&) = delete;

  // Until the lock is given back, at once where it is free, or for no reason: callers look again.
  // Where the system has no such barrier it is looked at once a millisecond.
  void sleep() noexcept { m_isSeen ? sleepFor(nullptr) : nap(); }

  void nap() noexcept {
    constexpr timespec kMillisecond{0, 1000000};
    sleepFor(&kMillisecond);
  }

 private:
  void sleepFor(const timespec* limit) noexcept {
    syscall(SYS_futex, &m_lock.state, FUTEX_WAIT_PRIVATE, kHeld, limit, nullptr, 0);
  }

  ThreadLock& m_lock;
  std::atomic<std::uint32_t>& m_count;
  bool m_isSeen;
};

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

// Whether the process has no other thread, as the C library knows. Only this thread can then make
// one, so that between two steps of it nobody else looks at a lock: a plain store does. Who is made
// later sees what was stored before.
inline bool isOnlyThread() noexcept {
#if __has_include(<sys/single_threaded.h>)
  return __libc_single_threaded != 0;
#else
  return false;
#endif
}

// Reads first: that spares a re-entrant owner a failing exchange, and while others hold the lock
// it leaves them their cache line.
bool tryTake(ThreadLock& lock) noexcept {
  std::uint32_t expected = kFree;
  if (lock.state.load(std::memory_order_relaxed) != kFree) {
    return false;
  }
  if (isOnlyThread()) {
    lock.state.store(kHeld, std::memory_order_relaxed);
    return true;
  }
  return lock.state.compare_exchange_strong(expected, kHeld, std::memory_order_acquire,
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

void takeBySleeping(ThreadLock& lock) noexcept {
  Sleeper self(lock);
  while (!tryTake(lock)) {
    self.sleep();
  }
}

void becomeOwner(ThreadLock& lock) noexcept {
  lock.owner.store(threadMark(), std::memory_order_relaxed);
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

// The owner goes first: after the store the lock may be another thread's already, or freed with
// what it is part of. A wake-up goes by the address alone, and finds nobody there at worst.
void leaveThreadLock(ThreadLock& lock) noexcept {
  if (lock.reentries > 0) {
    --lock.reentries;
    return;
  }
  const std::atomic<std::uint32_t>& sleepers = sleepersOf(lock);
  lock.owner.store(nullptr, std::memory_order_relaxed);
  lock.state.store(kFree, std::memory_order_release);
  std::atomic_signal_fence(std::memory_order_seq_cst);
  if (sleepers.load(std::memory_order_relaxed) != 0) {
    wakeOne(lock.state);
  }
}

void destroyThreadLock(ThreadLock* lock) noexcept {
  delete lock;
}

const void* currentThread() noexcept {
  return threadMark();
}

bool tryEnterThreadLock(ThreadLock& lock) noexcept {
  if (tryTake(lock)) {
    becomeOwner(lock);
    return true;
  }
  return holdsThreadLock(lock) && enterAgain(lock);
}

bool enterThreadLockOrNap(ThreadLock& lock) noexcept {
  if (tryTake(lock)) {
    becomeOwner(lock);
    return true;
  }
  Sleeper(lock).nap();
  return false;
}

// No order is needed: only this thread writes its own mark, and no other's equals it.
bool holdsThreadLock(const ThreadLock& lock) noexcept {
  return lock.owner.load(std::memory_order_relaxed) == threadMark();
}

void resetThreadLock(ThreadLock& lock) noexcept {
  lock.reentries = 0;
  lock.owner.store(nullptr, std::memory_order_relaxed);
  lock.state.store(kFree, std::memory_order_relaxed);
}

void forgetSleepers() noexcept {
  for (std::atomic<std::uint32_t>& sleepers : s_sleepers) {
    sleepers.store(0, std::memory_order_relaxed);
  }
}

}  // namespace LTLib::Platform
