// Whoever counts itself in and whoever closes the way look at the other's mark after setting their
// own, in the one order of all such operations: at least one of the two sees the other.
#include "ltlib/fileregistry/tree/tree_lock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <thread>

#include "ltlib/platform/fork.h"
#include "ltlib/platform/thread_lock.h"

namespace LTLib::detail {
namespace {

constexpr unsigned int kCounters = 16;
constexpr std::uint32_t kClosed = 1u << kCounters;  // below it a mark for each counter ever used

struct alignas(64) Counter {
  std::atomic<unsigned int> readers{0};
};

// All of it is ready before any code runs, since other static objects may use the registry.
constinit std::array<Counter, kCounters> s_counters;
constinit std::atomic<std::uint32_t> s_gate{0};
constinit const void* s_writer = nullptr;  // this and the next change under the mutex
constinit unsigned int s_depth = 0;

// Spreads the threads by the upper bits of a product, whatever they have in common.
unsigned int counterOfThread() {
  const auto thread = reinterpret_cast<std::uintptr_t>(Platform::currentThread());
  const std::uint64_t spread = static_cast<std::uint64_t>(thread) * 0x9E3779B97F4A7C15u;
  return static_cast<unsigned int>(spread >> 60);
}
static_assert(kCounters == 1u << 4);

// False, and nothing is counted, if a writer has closed the way.
bool countIn(unsigned int which) {
  std::atomic<unsigned int>& readers = s_counters[which].readers;
  readers.fetch_add(1);
  const std::uint32_t mark = 1u << which;
  std::uint32_t gate = s_gate.load();
  if ((gate & mark) == 0) {
    gate = s_gate.fetch_or(mark);
  }
  if ((gate & kClosed) != 0) {
    readers.fetch_sub(1, std::memory_order_release);
    return false;
  }
  return true;
}

void closeAndWait() {
  const std::uint32_t gate = s_gate.fetch_or(kClosed);
  for (unsigned int i = 0; i < kCounters; ++i) {
    while ((gate & (1u << i)) != 0 && s_counters[i].readers.load() != 0) {
      std::this_thread::yield();
    }
  }
}

// The readers of a child are none. A writer on another thread is one that waited for other processes,
// as a fork waits for every other one, and has left the trees whole.
const Platform::ForkedChildHook s_childHook([]() noexcept {
  for (Counter& counter : s_counters) {
    counter.readers.store(0, std::memory_order_relaxed);
  }
  if (s_writer != Platform::currentThread()) {
    s_gate.fetch_and(~kClosed);
    s_writer = nullptr;
    s_depth = 0;
  }
});

}  // namespace

TreeWriting::TreeWriting() : m_turn(treeLock()) {
  if (s_depth++ == 0) {
    s_writer = Platform::currentThread();
    closeAndWait();
  }
}

TreeWriting::~TreeWriting() {
  if (--s_depth == 0) {
    s_writer = nullptr;
    s_gate.fetch_and(~kClosed, std::memory_order_release);
  }
}

void TreeReading::begin() {
  const unsigned int which = counterOfThread();
  if (countIn(which)) {
    m_counter = &s_counters[which].readers;
  } else {
    treeLock().lock();
    m_counter = nullptr;
  }
  m_reads = true;
}

void TreeReading::end() {
  if (!m_reads) {
    return;
  }
  m_reads = false;
  if (m_counter != nullptr) {
    m_counter->fetch_sub(1, std::memory_order_release);
  } else {
    treeLock().unlock();
  }
}

}  // namespace LTLib::detail
