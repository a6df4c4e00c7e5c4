// Ends a test program that hangs, so that a deadlock is a failure with a name.
#ifndef LTLIB_TESTS_SUPPORT_WATCHDOG_H
#define LTLIB_TESTS_SUPPORT_WATCHDOG_H

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>

namespace LTLib::Testing {

/// Fails the program unless it ends within the time.
class Watchdog {
 public:
  explicit Watchdog(std::chrono::seconds limit)
      : m_thread([limit, ended = m_ended.get_future()] {
          if (ended.wait_for(limit) != std::future_status::ready) {
            std::fputs("the watchdog ends a test that hangs\n", stderr);
            std::_Exit(EXIT_FAILURE);
          }
        }) {}

  ~Watchdog() {
    m_ended.set_value();
    m_thread.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  std::promise<void> m_ended;
  std::thread m_thread;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_WATCHDOG_H
