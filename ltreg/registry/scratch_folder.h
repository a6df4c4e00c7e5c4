// A folder of the tool's own for as long as it works on files that are not the registry's.
#ifndef LTREG_REGISTRY_SCRATCH_FOLDER_H
#define LTREG_REGISTRY_SCRATCH_FOLDER_H

#include <filesystem>
#include <string>

namespace ltreg {

/// Lies where the system keeps files for a while, and goes with the object.
class ScratchFolder {
 public:
  /// Throws Failure where none can be made.
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  /// The pathname of a file in it.
  [[nodiscard]] std::string file(const char* name) const;

 private:
  std::filesystem::path m_path;
};

}  // namespace ltreg

#endif  // LTREG_REGISTRY_SCRATCH_FOLDER_H
