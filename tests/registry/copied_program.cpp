#include "tests/registry/copied_program.h"

#include <filesystem>

#include "tests/support/child_process.h"

namespace fs = std::filesystem;

namespace LTLib::Testing {
namespace {

// A library's name may go on with its version.
bool isLibrary(const std::string& name) {
  return name.ends_with(".dll") || name.starts_with("libltlib.so") ||
         name.starts_with("liblttracer.so");
}

}  // namespace

CopiedProgram::CopiedProgram() {
  const fs::path program = thisProgram();
  m_program = m_folder.path(program.filename().string());
  fs::copy_file(program, m_program);
  for (const fs::directory_entry& entry : fs::directory_iterator(program.parent_path())) {
    const std::string name = entry.path().filename().string();
    if (isLibrary(name)) {
      fs::copy(entry.path(), m_folder.path(name), fs::copy_options::copy_symlinks);
    }
  }
  write("registry.dat", "");
}

void CopiedProgram::write(const std::string& name, const std::string& text) const {
  (void)m_folder.write(name, text);
}

std::vector<std::string> CopiedProgram::play(const std::string& scenario,
                                             const std::vector<std::string>& arguments) const {
  ChildProcess child(scenario, arguments, m_program);
  std::vector<std::string> lines;
  for (std::string line = child.hear(); !line.empty(); line = child.hear()) {
    lines.push_back(line);
  }
  if (const int code = child.wait(); code != 0) {
    lines.push_back("exit code " + std::to_string(code));
  }
  return lines;
}

}  // namespace LTLib::Testing
