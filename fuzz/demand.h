// What a fuzz target checks.
#ifndef LTLIB_FUZZ_DEMAND_H
#define LTLIB_FUZZ_DEMAND_H

#include <cstdio>
#include <cstdlib>

namespace LTLib::Fuzzing {

/// Ends the process with that text unless the condition holds.
inline void demand(bool holds, const char* text) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", text);
    std::abort();
  }
}

}  // namespace LTLib::Fuzzing

#endif  // LTLIB_FUZZ_DEMAND_H
