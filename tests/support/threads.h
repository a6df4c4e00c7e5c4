// Threads that set out together.
#ifndef LTLIB_TESTS_SUPPORT_THREADS_H
#define LTLIB_TESTS_SUPPORT_THREADS_H

#include <thread>
#include <vector>

#include "tests/support/latch.h"

namespace LTLib::Testing {

/// Runs function(0) to function(count - 1) at once, each on a thread of its own, and waits for all.
template <typename Function>
void runTogether(int count, const Function& function) {
  Latch start(count);
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&start, &function, i] {
      start.arrive_and_wait();
      function(i);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_THREADS_H
