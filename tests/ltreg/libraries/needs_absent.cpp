// Calls a function that is missing at run time: of a library that the loader does not find, or one
// that no library has.
#include "tests/ltreg/libraries/absent.h"

namespace {

const int s_value = ltregTestAbsent();

}  // namespace
