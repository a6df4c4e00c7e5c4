#include "ltlib/platform/fork.h"

#include <pthread.h>

#include <array>

#include "ltlib/platform/linux/fork_window.h"
#include "ltlib/platform/linux/linux_thread_lock.h"
#include "ltlib/platform/process.h"

namespace LTLib::Platform {
namespace {

struct Slot {
  ThreadLock lock{kSpinCount};
  std::atomic<bool> passedBy{false};  // its holder waits for another process
};

constexpr std::size_t kLoaderLocks = static_cast<std::size_t>(ProcessLock::kClasses) + 1;
constexpr std::size_t kLocks = static_cast<std::size_t>(ProcessLock::kSoleWork) + 1;

// Components run under the loader's locks and may wait for whatever they like, the forking thread
// included.
constexpr std::uint64_t kSecondsForLoader = 1;

// Ready before any constructor runs: other static objects of the library lock already.
constinit std::array<Slot, kLocks> s_slots;

// Held by a forking thread from its first wait to the end of the fork, and by a thread that closes
// its window, so that no window closes under a fork. Nobody waits for anything else under it but
// the forking thread, and that for no thread with an open window.
constinit ThreadLock s_forks{kSpinCount};
constinit std::atomic<bool> s_handled{false};

// Both lists change under locks that forks take.
constinit SoleWork* s_works = nullptr;
constinit ForkedChildHook* s_hooks = nullptr;

// Of two threads that fork, the one that waits may hold what the other one wants.
void enterForks() noexcept {
  const ForkWindow window;
  static_cast<void>(enterThreadLock(s_forks));
}

std::uint64_t endOfPatience() noexcept {
  const MonotonicTime now = monotonicTime();
  return now.ticks + kSecondsForLoader * now.ticksPerSecond;
}

bool isGivenUp(std::size_t place, std::uint64_t endOfPatience) noexcept {
  return s_slots[place].passedBy.load(std::memory_order_acquire) ||
         (place < kLoaderLocks && monotonicTime().ticks > endOfPatience);
}

void prepare() {
  enterForks();
  const std::uint64_t end = endOfPatience();
  // In the order in which every thread takes them, so that a fork cannot deadlock with one.
  for (std::size_t i = 0; i < kLocks; ++i) {
    ThreadLock& lock = s_slots[i].lock;
    bool entered = tryEnterThreadLock(lock);
    while (!entered && !isGivenUp(i, end)) {
      entered = enterThreadLockOrNap(lock);
    }
  }
}

// What the forking thread holds it entered once more in prepare, or then alone.
void leaveOwn(Slot& slot) noexcept {
  if (holdsThreadLock(slot.lock)) {
    leaveThreadLock(slot.lock);
  }
}

void goOnInParent() {
  for (std::size_t i = kLocks; i-- > 0;) {
    leaveOwn(s_slots[i]);
  }
  leaveThreadLock(s_forks);
}

}  // namespace

struct ForkedChild {
  // The notes of other threads lie on stacks that nobody uses any more.
  static void giveBackWorks() noexcept {
    SoleWork** link = &s_works;
    while (SoleWork* const work = *link) {
      if (work->m_thread == currentThread()) {
        link = &work->m_next;
      } else {
        *link = work->m_next;
        work->m_giveBack(work->m_work);
      }
    }
  }

  static void callHooks() noexcept {
    for (const ForkedChildHook* hook = s_hooks; hook != nullptr; hook = hook->m_next) {
      hook->m_forget();
    }
  }

  static void goOn() {
    forgetSleepers();
    // Both look at what the locks guard, and so come ahead of freeing them.
    giveBackWorks();
    callHooks();
    for (Slot& slot : s_slots) {
      if (!holdsThreadLock(slot.lock)) {
        resetThreadLock(slot.lock);
      }
      slot.passedBy.store(false, std::memory_order_relaxed);
    }
    goOnInParent();
  }
};

namespace {

const bool s_handledAtLoad = handleForks();

}  // namespace

bool handleForks() noexcept {
  if (!s_handled) {
    s_handled = pthread_atfork(prepare, goOnInParent, ForkedChild::goOn) == 0;
  }
  return s_handled;
}

ThreadLock& processLock(ProcessLock which) noexcept {
  return s_slots[static_cast<std::size_t>(which)].lock;
}

ForkWindow::ForkWindow() noexcept {
  for (std::size_t i = 0; i < kLocks; ++i) {
    if (holdsThreadLock(s_slots[i].lock)) {
      m_open |= 1u << i;
      s_slots[i].passedBy.store(true, std::memory_order_release);
    }
  }
}

ForkWindow::~ForkWindow() {
  if (m_open == 0) {
    return;
  }
  const ThreadLockScope hold(s_forks);
  for (std::size_t i = 0; i < kLocks; ++i) {
    if ((m_open & (1u << i)) != 0) {
      s_slots[i].passedBy.store(false, std::memory_order_relaxed);
    }
  }
}

void SoleWork::begin() noexcept {
  m_thread = currentThread();
  m_next = s_works;
  s_works = this;
}

void SoleWork::end() noexcept {
  SoleWork** link = &s_works;
  while (*link != this) {
    link = &(*link)->m_next;
  }
  *link = m_next;
  m_thread = nullptr;
}

SoleWork::~SoleWork() {
  if (m_thread != nullptr) {
    const ThreadLockScope hold(processLock(ProcessLock::kSoleWork));
    end();
  }
}

ForkedChildHook::ForkedChildHook(Forget forget) noexcept : m_forget(forget) {
  const ThreadLockScope hold(processLock(ProcessLock::kSoleWork));
  m_next = s_hooks;
  s_hooks = this;
}

}  // namespace LTLib::Platform
