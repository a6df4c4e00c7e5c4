#include "tests/component/libraries/stage.h"

#include <mutex>
#include <utility>

namespace Stage {
namespace {

std::mutex s_guard;

// Never destroyed: libraries go when the process ends, too.
std::vector<std::string>& notes() {
  static auto* const taken = new std::vector<std::string>;
  return *taken;
}

}  // namespace

void note(const std::string& event) {
  const std::lock_guard<std::mutex> hold(s_guard);
  notes().push_back(event);
}

std::vector<std::string> takeNotes() {
  const std::lock_guard<std::mutex> hold(s_guard);
  return std::exchange(notes(), {});
}

Presence::Presence(std::string library) : m_library(std::move(library)) {
  note(m_library + " comes");
}

Presence::~Presence() {
  note(m_library + " goes");
}

}  // namespace Stage
