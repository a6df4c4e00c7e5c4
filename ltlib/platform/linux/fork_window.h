// Waits that a fork does not wait for.
#ifndef LTLIB_PLATFORM_LINUX_FORK_WINDOW_H
#define LTLIB_PLATFORM_LINUX_FORK_WINDOW_H

namespace LTLib::Platform {

/// Stands around a wait for another process: while it lives, a fork by another thread passes by the
/// process locks that this thread holds, and the child has them free. Requires: what they guard is
/// whole, and nothing of it is touched meanwhile.
class ForkWindow {
 public:
  ForkWindow() noexcept;
  ~ForkWindow();
  ForkWindow(const ForkWindow&) = delete;
  ForkWindow& operator=(const ForkWindow&) = delete;

 private:
  unsigned int m_open = 0;  // a bit for each lock that is passed by
};

/// Has forks handled from the first call on, which the library makes when it comes in; false when
/// the system has no memory for that.
[[nodiscard]] bool handleForks() noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_LINUX_FORK_WINDOW_H
