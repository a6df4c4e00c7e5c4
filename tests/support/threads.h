// Threads that set out together.
#ifndef LTLIB_TESTS_SUPPORT_THREADS_H
#define LTLIB_TESTS_SUPPORT_THREADS_H

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace LTLib::Testing {

/// A count that threads wait for. The standard library's own can miss a wake-up where the system
/// lets nobody wait on a word of memory (libstdc++ 12 on Windows), and a test then hangs.
class Latch {
 public:
  explicit Latch(int count) : m_count(count) {}

  void count_down() {
    const std::lock_guard<std::mutex> hold(m_guard);
    if (--m_count == 0) {
      m_reached.notify_all();
    }
  }

  void wait() {
    std::unique_lock<std::mutex> hold(m_guard);
    m_reached.wait(hold, [this] { return m_count <= 0; });
  }

  void arrive_and_wait() {
    count_down();
    wait();
  }

 private:
  std::mutex m_guard;
  std::condition_variable m_reached;
  int m_count;
};

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
