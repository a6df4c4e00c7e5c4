#include "lttracer/tracer.h"

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

int threshold() {
  static const int value = thresholdFromEnvironment();
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
