// A count that threads wait for. The standard library's own can miss a wake-up where the system
// lets nobody wait on a word of memory (libstdc++ 12 on Windows), and a test then hangs.
#ifndef LTLIB_TESTS_SUPPORT_LATCH_H
#define LTLIB_TESTS_SUPPORT_LATCH_H

#include <condition_variable>
#include <mutex>

namespace LTLib::Testing {

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

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_LATCH_H
