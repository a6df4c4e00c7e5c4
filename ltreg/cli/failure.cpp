#include "ltreg/cli/failure.h"

#include <cstdio>
#include <system_error>

namespace ltreg {

std::string describeFailure(int result) {
  return "error " + std::to_string(result) +
         (result > 0 ? ", " + std::system_category().message(result) : std::string());
}

void demandDone(int result, const std::string& what) {
  if (result != 0) {
    throw Failure(ExitCode::kStoreFailed,
                  what + " was refused by the registry with " + describeFailure(result));
  }
}

void complain(const std::string& message) {
  // In one piece, so that the lines of tools that run side by side do not mix.
  const std::string line = "ltreg: " + message + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
  // Some systems hold it back where it leads to no terminal, and a notice of a wait is for now.
  std::fflush(stderr);
}

}  // namespace ltreg
