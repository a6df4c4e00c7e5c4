// Stands where no loader looks.
#include "tests/ltreg/libraries/absent.h"

int ltregTestAbsent() {
  return 1;
}
