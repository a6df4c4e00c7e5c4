#include "lttracer/tracer.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string_view>

namespace {

constexpr int kSilent = -1;
constexpr int kWarningsOnly = 0;

int thresholdFromEnvironment() {
  const char* setting = std::getenv("LTTRACER");
  if (setting == nullptr || *setting == '\0') {
    return kSilent;
  }
  return std::strcmp(setting, "warning") == 0 ? kWarningsOnly : std::atoi(setting);
}

// No static object of the function: a fork that crosses with its making would leave the child to
// wait for the end of that.
int threshold() {
  constexpr int kUnknown = kSilent - 1;
  constinit static std::atomic<int> s_value{kUnknown};
  int value = s_value.load(std::memory_order_relaxed);
  if (value == kUnknown) {
    value = std::max(thresholdFromEnvironment(), kSilent);
    s_value.store(value, std::memory_order_relaxed);
  }
  return value;
}

// The line goes out in one call, so that lines of several threads do not mix. It may hold any byte.
void write(const std::basic_ostream<char>& message, const char* file, long line, const char* tag,
           const char* function) {
  std::stringstream text;
  text << tag << ' ' << file << ':' << line << ' ' << function << ": ";
  if (message.rdbuf() != nullptr) {
    text << message.rdbuf();
    text.clear();
  }
  text << '\n';
  const std::string_view whole = text.view();
  std::fwrite(whole.data(), 1, whole.size(), stderr);
}

}  // namespace

namespace Tracer::_internal_ {

void Warning(const std::basic_ostream<char>& message, const char* file, long line, const char* tag,
             const char* function) {
  if (threshold() > kSilent) {
    write(message, file, line, tag, function);
  }
}

void Log(Tracer::LogDetail detail, const std::basic_ostream<char>& message, const char* file,
         long line, const char* tag, const char* function) {
  if (detail <= threshold()) {
    write(message, file, line, tag, function);
  }
}

}  // namespace Tracer::_internal_
