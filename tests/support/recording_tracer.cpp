#include "tests/support/recording_tracer.h"

#include <mutex>
#include <sstream>
#include <utility>

#include "lttracer/tracer.h"

namespace {

std::mutex s_guard;

// Never destroyed: late destructors may still trace.
std::vector<std::string>& lines() {
  static auto* recorded = new std::vector<std::string>;
  return *recorded;
}

}  // namespace

std::vector<std::string> LTLib::Testing::takeTraces() {
  const std::lock_guard<std::mutex> hold(s_guard);
  return std::exchange(lines(), {});
}

namespace Tracer::_internal_ {

void Warning(const std::ostream& message, const char* file, long line, const char* tag,
             const char* function) {
  Log({}, message, file, line, tag, function);
}

void Log(Tracer::LogDetail detail, const std::ostream& message, const char* file, long /*line*/,
         const char* tag, const char* function) {
  std::ostringstream text;
  text << detail << ' ' << file << ' ' << tag << ' ' << function << ' ' << message.rdbuf();
  const std::lock_guard<std::mutex> hold(s_guard);
  lines().push_back(text.str());
}

}  // namespace Tracer::_internal_
