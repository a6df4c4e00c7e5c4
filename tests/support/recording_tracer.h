// A tracer that keeps every line for the tests that look at them.
#ifndef LTLIB_TESTS_SUPPORT_RECORDING_TRACER_H
#define LTLIB_TESTS_SUPPORT_RECORDING_TRACER_H

#include <string>
#include <vector>

namespace LTLib::Testing {

struct TraceLine {
  int detail = 0;  // 0 for a warning
  std::string text;
  std::string file;
  long line = 0;
  std::string tag;
  std::string function;
};

/// Collects the lines of all threads from its construction to its end. One at a time.
class TraceRecording {
 public:
  TraceRecording();
  ~TraceRecording();
  TraceRecording(const TraceRecording&) = delete;
  TraceRecording& operator=(const TraceRecording&) = delete;

  /// The lines so far, and none from then on.
  std::vector<TraceLine> take();
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_RECORDING_TRACER_H
