// Roots of this process that no registry is looked at by, under which store files can be read.
#ifndef LTREG_REGISTRY_SPARE_ROOT_H
#define LTREG_REGISTRY_SPARE_ROOT_H

#include "ltlib/ltlib.h"

namespace ltreg {

/// Keeps a root from being spared. The machine root always is kept, since expansions read it.
void keepRoot(enumRegRoot root);

/// A root that this process has not touched, each but once: the library reads a root's file at its
/// first use and never again. Throws Failure when all are gone; there are two at least where two
/// roots are kept besides the machine's.
[[nodiscard]] enumRegRoot takeSpareRoot();

}  // namespace ltreg

#endif  // LTREG_REGISTRY_SPARE_ROOT_H
