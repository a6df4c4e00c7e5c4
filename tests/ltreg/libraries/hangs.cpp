// Never gets to the end of its load.
#include <chrono>
#include <thread>

namespace {

struct Hanging {
  Hanging() {
    for (;;) {
      std::this_thread::sleep_for(std::chrono::hours(1));
    }
  }
};

const Hanging s_hanging;

}  // namespace
