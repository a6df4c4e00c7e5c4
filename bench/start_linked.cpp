// A process that does nothing, with the library linked to it.
#include <iostream>

#include "ltlib/ltlib.h"

int main(int count, char** /*words*/) {
  if (count > 1) {
    (void)SaveConfiguration(REG_ROOT_NONE);
  }
  std::cout.flush();
}
