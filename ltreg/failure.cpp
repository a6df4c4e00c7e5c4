#include "ltreg/failure.h"

#include <cstdio>

namespace ltreg {

void complain(const std::string& message) {
  const std::string line = "ltreg: " + message + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace ltreg
