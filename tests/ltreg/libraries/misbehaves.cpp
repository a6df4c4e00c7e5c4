// Does something while it loads that keeps the load from its end.
#include <chrono>
#include <cstdlib>
#include <thread>

const struct Misbehaving {
  Misbehaving() { WHAT_IT_DOES; }
} kMisbehaving;
