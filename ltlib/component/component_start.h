/// \file
/// \brief How a component library starts where the system's loader cannot stop an exception: what
/// `ltlib_add_component` links into each library calls this, and nobody else does.
///
/// The library's initialisers, which construct its static objects, are kept from the system's
/// loader and run from here. An exception that leaves one ends the load: it waits until the
/// system's loader is done, and the Load that brought the library in throws it then.
#ifndef LTLIB_COMPONENT_COMPONENT_START_H
#define LTLIB_COMPONENT_COMPONENT_START_H

#include "ltlib/export.h"

namespace LTLib {

/// What a compiler makes of static objects; it gets the arguments of `main`.
using ComponentInitialiser = void (*)(int count, char** words, char** environment);

/// Runs the initialisers from `first` up to `end`. Those behind one that throws do not run. What is
/// thrown passes through where no Load of this thread is under way.
LTLIB_EXPORT void startComponent(const ComponentInitialiser* first, const ComponentInitialiser* end,
                                 int count, char** words, char** environment);

}  // namespace LTLib

#endif  // LTLIB_COMPONENT_COMPONENT_START_H
