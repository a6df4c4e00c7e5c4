#include "ltlib/foundation/do_once.h"

#include <chrono>
#include <thread>

namespace {

constexpr std::int32_t kUntouched = -1;
constexpr auto kPollInterval = std::chrono::milliseconds(1);

bool isDone(const volatile ltDoOnce_t& once) {
  return once.done.load(std::memory_order_acquire) != 0;
}

// True for the one caller that finds the record untouched.
bool entersFirst(volatile ltDoOnce_t& once) {
  return once.entered.fetch_add(1, std::memory_order_acq_rel) == kUntouched;
}

void run(volatile ltDoOnce_t& once, void (*init)()) {
  try {
    init();
  } catch (...) {
    once.entered.store(kUntouched, std::memory_order_release);
    throw;
  }
  once.done.store(1, std::memory_order_release);
}

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
    if (entersFirst(once)) {
      run(once, init);
    } else {
      waitWhileRunning(once);
    }
  } while (!isDone(once));
  return LTLib::kInitialised;
}
