#include <filesystem>

#include "tests/support/mapped_library.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

bool isMapped(const std::string& path) {
  const std::string file = std::filesystem::canonical(path).string();
  return readFile("/proc/self/maps").find(file + '\n') != std::string::npos;
}

}  // namespace LTLib::Testing
