#include "ltlib/platform/event.h"

#include <atomic>
#include <cstdint>
#include <new>

namespace LTLib::Platform {

struct Event {
  explicit Event(EventReset reset) : reset(reset) {}

  const EventReset reset;
  // Bit 0 tells whether the event is open, the rest counts how often it was opened: who waits for
  // an event that opens and closes again at once still gets through.
  std::atomic<std::uint32_t> word{0};
};

namespace {

constexpr std::uint32_t kOpen = 1;
constexpr std::uint32_t kOneOpening = 2;

bool isOpen(std::uint32_t word) noexcept {
  return (word & kOpen) != 0;
}

// For a manual event: all who were there when it opened go on, though it may be closed by now.
void waitForOpening(Event& event) noexcept {
  const std::uint32_t seen = event.word.load(std::memory_order_acquire);
  for (std::uint32_t now = seen; !isOpen(now) && now == seen;
       now = event.word.load(std::memory_order_acquire)) {
    event.word.wait(now, std::memory_order_acquire);
  }
}

// For an automatic event: one goes on for each opening, the one whose exchange closes it.
void waitAndClose(Event& event) noexcept {
  std::uint32_t now = event.word.load(std::memory_order_relaxed);
  for (;;) {
    if (!isOpen(now)) {
      event.word.wait(now, std::memory_order_relaxed);
      now = event.word.load(std::memory_order_relaxed);
    } else if (event.word.compare_exchange_weak(now, now & ~kOpen, std::memory_order_acquire,
                                                std::memory_order_relaxed)) {
      return;
    }
  }
}

}  // namespace

Event* createEvent(EventReset reset) noexcept {
  return new (std::nothrow) Event(reset);
}

// Whoever it lets through may free the event at once, so that nothing of it is read after that. A
// wake-up goes by the word's address alone.
void setEvent(Event& event) noexcept {
  const EventReset reset = event.reset;
  std::uint32_t now = event.word.load(std::memory_order_relaxed);
  do {
    if (isOpen(now)) {
      return;
    }
  } while (!event.word.compare_exchange_weak(now, (now + kOneOpening) | kOpen,
                                             std::memory_order_release, std::memory_order_relaxed));
  if (reset == EventReset::kManual) {
    event.word.notify_all();
  } else {
    event.word.notify_one();
  }
}

void resetEvent(Event& event) noexcept {
  // An event that is closed, as most are, costs no write.
  if (isOpen(event.word.load(std::memory_order_relaxed))) {
    event.word.fetch_and(~kOpen, std::memory_order_acq_rel);
  }
}

void waitForEvent(Event& event) noexcept {
  if (event.reset == EventReset::kManual) {
    waitForOpening(event);
  } else {
    waitAndClose(event);
  }
}

void destroyEvent(Event* event) noexcept {
  delete event;
}

}  // namespace LTLib::Platform
