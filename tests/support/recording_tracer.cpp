#include "tests/support/recording_tracer.h"

#include <mutex>
#include <sstream>
#include <utility>

#include "lttracer/tracer.h"

namespace LTLib::Testing {
namespace {

std::mutex s_guard;
bool s_recording = false;

// Never destroyed: late destructors may still trace.
std::vector<TraceLine>& lines() {
  static auto* recorded = new std::vector<TraceLine>;
  return *recorded;
}

void record(int detail, const std::ostream& message, const char* file, long line, const char* tag,
            const char* function) {
  const std::lock_guard<std::mutex> hold(s_guard);
  if (!s_recording) {
    return;
  }
  std::stringstream text;
  text << message.rdbuf();
  lines().push_back({detail, text.str(), file, line, tag, function});
}

}  // namespace

TraceRecording::TraceRecording() {
  const std::lock_guard<std::mutex> hold(s_guard);
  s_recording = true;
  lines().clear();
}

TraceRecording::~TraceRecording() {
  const std::lock_guard<std::mutex> hold(s_guard);
  s_recording = false;
}

std::vector<TraceLine> TraceRecording::take() {
  const std::lock_guard<std::mutex> hold(s_guard);
  return std::exchange(lines(), {});
}

}  // namespace LTLib::Testing

namespace Tracer::_internal_ {

void Warning(const std::ostream& message, const char* file, long line, const char* tag,
             const char* function) {
  LTLib::Testing::record(0, message, file, line, tag, function);
}

void Log(Tracer::LogDetail detail, const std::ostream& message, const char* file, long line,
         const char* tag, const char* function) {
  LTLib::Testing::record(detail, message, file, line, tag, function);
}

}  // namespace Tracer::_internal_
