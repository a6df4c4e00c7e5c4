#include "tests/component/libraries/stage.h"

#include <mutex>
#include <utility>

namespace Stage {
namespace {

std::mutex s_guard;

// Never destroyed: libraries go when the process ends, too.
std::string& s_notes = *new std::string;

}  // namespace

void note(const std::string& event) {
  const std::lock_guard<std::mutex> hold(s_guard);
  s_notes += (s_notes.empty() ? "" : ", ") + event;
}

std::string takeNotes() {
  const std::lock_guard<std::mutex> hold(s_guard);
  return std::exchange(s_notes, {});
}

Presence::Presence(const char* library) : m_library(library) {
  note(m_library + " comes");
}

Presence::~Presence() {
  note(m_library + " goes");
}

}  // namespace Stage
