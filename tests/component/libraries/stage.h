// What component libraries and their tests share: notes of what happened, in order.
#ifndef LTLIB_TESTS_COMPONENT_LIBRARIES_STAGE_H
#define LTLIB_TESTS_COMPONENT_LIBRARIES_STAGE_H

#include <string>

namespace Stage {

void note(const std::string& event);

/// The notes so far, parted by commas, and none from then on.
std::string takeNotes();

/// Notes that a library comes and goes, as a static object of it.
struct Presence {
  explicit Presence(const char* library);
  ~Presence();
  const std::string m_library;
};

}  // namespace Stage

#endif  // LTLIB_TESTS_COMPONENT_LIBRARIES_STAGE_H
