// What a person sees of work that takes its time.
#ifndef LTREG_CLI_PROGRESS_H
#define LTREG_CLI_PROGRESS_H

#include <chrono>
#include <cstddef>

namespace ltreg {

/// Tells on standard error, if that is a terminal, how many of something are done, from the first
/// second on. The line is gone with the object. There is one at a time.
class Progress {
 public:
  explicit Progress(const char* what);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// One more is done.
  void step();

  /// Takes the line away, so that others can write theirs.
  static void hide();

 private:
  using Clock = std::chrono::steady_clock;

  const char* m_what;
  bool m_isSeen;
  std::size_t m_count = 0;
  Clock::time_point m_next;
};

}  // namespace ltreg

#endif  // LTREG_CLI_PROGRESS_H
