// What component libraries and their tests share: notes of what happened, in order.
#ifndef LTLIB_TESTS_COMPONENT_LIBRARIES_STAGE_H
#define LTLIB_TESTS_COMPONENT_LIBRARIES_STAGE_H

#include <string>
#include <vector>

namespace Stage {

void note(const std::string& event);

/// The notes so far, and none from then on.
std::vector<std::string> takeNotes();

/// Notes that a library comes and goes, as a static object of it.
class Presence {
 public:
  explicit Presence(std::string library);
  ~Presence();
  Presence(const Presence&) = delete;
  Presence& operator=(const Presence&) = delete;

 private:
  std::string m_library;
};

}  // namespace Stage

#endif  // LTLIB_TESTS_COMPONENT_LIBRARIES_STAGE_H
