// This test program in a folder of its own, with the libraries beside it, so that files may be
// laid beside them.
#ifndef LTLIB_TESTS_REGISTRY_COPIED_PROGRAM_H
#define LTLIB_TESTS_REGISTRY_COPIED_PROGRAM_H

#include <string>
#include <vector>

#include "tests/registry/registry_fixture.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

class CopiedProgram {
 public:
  /// With the marker of the file backend, whose stores lie in stores().
  CopiedProgram();

  /// Writes a file beside the library.
  void write(const std::string& name, const std::string& text) const;

  /// Plays a scenario in a new process; its lines, and a last one if it did not end well.
  [[nodiscard]] std::vector<std::string> play(const std::string& scenario,
                                              const std::vector<std::string>& arguments = {}) const;

  [[nodiscard]] const StoreFolder& stores() const { return m_stores; }

 private:
  TempFolder m_folder;
  StoreFolder m_stores;
  std::string m_program;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_REGISTRY_COPIED_PROGRAM_H
