// The one initialiser of a component library that the system's loader sees: it has ltlib run all
// others, which the linker's script start.ld puts aside.
#include "ltlib/component/component_start.h"

// The ends of their list.
extern "C" {
extern const LTLib::ComponentInitialiser ltlib_initialisers_begin[]
    __attribute__((visibility("hidden")));
extern const LTLib::ComponentInitialiser ltlib_initialisers_end[]
    __attribute__((visibility("hidden")));
}

namespace {

void start(int count, char** words, char** environment) {
  LTLib::startComponent(ltlib_initialisers_begin, ltlib_initialisers_end, count, words,
                        environment);
}

// The name is one of C: a sanitizer pads what lies in any other section.
__attribute__((section("ltlib_start"), used)) const LTLib::ComponentInitialiser kStart = start;

}  // namespace
