// Does something while it loads that keeps the load from its end.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "ltlib/ltlib.h"

[[maybe_unused]] static void hang() {
  std::puts("hangs");
  std::fflush(stdout);
  std::this_thread::sleep_for(std::chrono::hours(1));
}

const struct Misbehaving {
  Misbehaving() { WHAT_IT_DOES; }
} kMisbehaving;
