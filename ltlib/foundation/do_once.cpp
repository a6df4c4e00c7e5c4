#include "ltlib/foundation/do_once.h"

#include <chrono>
#include <thread>

#include "ltlib/platform/fork.h"

namespace {

namespace Platform = LTLib::Platform;

constexpr std::int32_t kUntouched = -1;
constexpr auto kPollInterval = std::chrono::milliseconds(1);

bool isDone(const volatile ltDoOnce_t& once) {
  return once.done.load(std::memory_order_acquire) != 0;
}

void makeUntouched(volatile void* once) noexcept {
  static_cast<volatile ltDoOnce_t*>(once)->entered.store(kUntouched, std::memory_order_release);
}

// Whether this caller found the record untouched; then it ran the initialiser.
bool runsFirst(volatile ltDoOnce_t& once, void (*init)()) {
  Platform::SoleWork work(&once, makeUntouched);
  // The first to count itself runs it; how many came later does not matter, only that it is not -1.
  if (!work.beginIf(
          [&once] { return once.entered.fetch_add(1, std::memory_order_acq_rel) == kUntouched; })) {
    return false;
  }
  try {
    init();
  } catch (...) {
    work.endWith([&once] { makeUntouched(&once); });
    throw;
  }
  work.endWith([&once] { once.done.store(1, std::memory_order_release); });
  return true;
}

// No event to wait for: a record lies in static storage, without a constructor, and a wait is rare.
// Ends when the initialiser has completed or when it failed and somebody has to try again.
void waitWhileRunning(const volatile ltDoOnce_t& once) {
  while (!isDone(once) && once.entered.load(std::memory_order_acquire) != kUntouched) {
    std::this_thread::sleep_for(kPollInterval);
  }
}

}  // namespace

QSResult ltDoOnceInternal::ltDoOnceImpl(volatile ltDoOnce_t& once, void (*init)()) {
  if (init == nullptr) {
    return LTLib::kNullArgument;
  }
  do {
    if (!runsFirst(once, init)) {
      waitWhileRunning(once);
    }
  } while (!isDone(once));
  return LTLib::kInitialised;
}
