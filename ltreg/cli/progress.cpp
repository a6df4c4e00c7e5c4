#include "ltreg/cli/progress.h"

#include <cstdio>
#include <string>
#include <utility>

#include "ltlib/platform/terminal.h"

namespace ltreg {
namespace {

constexpr std::chrono::milliseconds kFirst{1000};
constexpr std::chrono::milliseconds kBetween{200};
constexpr std::size_t kStepsPerLook = 64;  // at the clock

bool s_isShown = false;

}  // namespace

Progress::Progress(const char* what)
    : m_what(what),
      m_isSeen(LTLib::Platform::takesEscapes(stderr)),
      m_next(Clock::now() + kFirst) {}

Progress::~Progress() {
  hide();
}

void Progress::hide() {
  if (std::exchange(s_isShown, false)) {
    LTLib::Platform::writeText(stderr, "\r\x1B[K");
  }
}

void Progress::step() {
  if (++m_count % kStepsPerLook != 0 || !m_isSeen || Clock::now() < m_next) {
    return;
  }
  LTLib::Platform::writeText(stderr, "\r" + std::to_string(m_count) + ' ' + m_what);
  s_isShown = true;
  m_next = Clock::now() + kBetween;
}

}  // namespace ltreg
