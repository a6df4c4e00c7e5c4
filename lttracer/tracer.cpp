#include "lttracer/tracer.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string_view>
#include <utility>

namespace {

int thresholdFromEnvironment() {
  const char* setting = std::getenv("LTTRACER");
  if (setting == nullptr || *setting == '\0') {
    return Tracer::kDetailNone;
  }
  return std::strcmp(setting, "warning") == 0 ? Tracer::kDetailWarning : std::atoi(setting);
}

// No static object of the function: a fork that crosses with its making would leave the child to
// wait for the end of that.
int threshold() {
  constexpr int kUnknown = Tracer::kDetailNone - 1;
  constinit static std::atomic<int> s_value{kUnknown};
  int value = s_value.load(std::memory_order_relaxed);
  if (value == kUnknown) {
    value = std::max<int>(thresholdFromEnvironment(), Tracer::kDetailNone);
    s_value.store(value, std::memory_order_relaxed);
  }
  return value;
}

// The line goes out in one call, so that lines of several threads do not mix.
void writeToStandardError(const Tracer::Line& line, void* /*context*/) {
  std::stringstream whole;
  whole << line.tag << ' ' << line.file << ':' << line.line << ' ' << line.function << ": "
        << line.text << '\n';
  const std::string_view bytes = whole.view();
  std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

constexpr Tracer::Handler kStandardError{writeToStandardError, nullptr, Tracer::kDetailAll};

// Null for standard error, as far as the environment asks for it.
constinit std::atomic<const Tracer::Handler*> s_handler{nullptr};

// Null where nobody wants a line of that detail.
const Tracer::Handler* takerOf(Tracer::LogDetail detail) {
  const Tracer::Handler* const handler = s_handler.load(std::memory_order_acquire);
  if (handler == nullptr) {
    return detail <= threshold() ? &kStandardError : nullptr;
  }
  return detail <= handler->mostDetail ? handler : nullptr;
}

// What the taker throws must not get in the way of the failure that is traced.
void handOver(const Tracer::Handler& taker, const Tracer::Line& line) {
  constinit static thread_local bool s_isTaking = false;
  if (s_isTaking) {
    return;
  }
  s_isTaking = true;
  try {
    taker.take(line, taker.context);
  } catch (...) {
  }
  s_isTaking = false;
}

std::string textOf(const std::ostream& message) {
  std::stringstream text;
  if (message.rdbuf() != nullptr) {
    text << message.rdbuf();
  }
  return std::move(text).str();
}

}  // namespace

namespace Tracer {

const Handler* setHandler(const Handler* handler) noexcept {
  return s_handler.exchange(handler, std::memory_order_acq_rel);
}

namespace _internal_ {

void Warning(const std::basic_ostream<char>& message, const char* file, long line, const char* tag,
             const char* function) {
  if (const Handler* const taker = takerOf(kDetailWarning); taker != nullptr) {
    handOver(*taker, {kDetailWarning, textOf(message), file, line, tag, function});
  }
}

void Log(Tracer::LogDetail detail, const std::basic_ostream<char>& message, const char* file,
         long line, const char* tag, const char* function) {
  if (const Handler* const taker = takerOf(detail); taker != nullptr) {
    handOver(*taker, {detail, textOf(message), file, line, tag, function});
  }
}

}  // namespace _internal_
}  // namespace Tracer
