#include <windows.h>

#include "tests/support/mapped_library.h"

namespace LTLib::Testing {

bool isMapped(const std::string& path) {
  return GetModuleHandleA(path.c_str()) != nullptr;
}

}  // namespace LTLib::Testing
