// A folder of a test's own, gone with everything in it at the end of the object.
#ifndef LTLIB_TESTS_SUPPORT_TEMP_FOLDER_H
#define LTLIB_TESTS_SUPPORT_TEMP_FOLDER_H

#include <string>
#include <vector>

namespace LTLib::Testing {

class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  /// The folder's path, or that of a name in it.
  [[nodiscard]] const std::string& path() const { return m_path; }
  [[nodiscard]] std::string path(const std::string& name) const;

  /// The folder's own name, which no other folder bears.
  [[nodiscard]] std::string name() const;

  /// The names in the folder, sorted.
  [[nodiscard]] std::vector<std::string> names() const;

  /// Writes a file of the folder, byte for byte, and gives its path.
  std::string write(const std::string& name, const std::string& text) const;

 private:
  std::string m_path;
};

/// The text of a file, line ends as line feeds; a text that says so if it cannot be read.
[[nodiscard]] std::string readFile(const std::string& path);

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_TEMP_FOLDER_H
