// What is wrong with a class: looked into from outside, and tried in a process of its own.
#ifndef LTREG_COMPONENT_COMPONENT_CHECK_H
#define LTREG_COMPONENT_COMPONENT_CHECK_H

#include "ltreg/cli/request.h"

namespace ltreg {

ExitCode checkClass(const Request& request, Output& output);

/// The part of checkClass that a process of its own carries out.
ExitCode probeClass(const Request& request, Output& output);

}  // namespace ltreg

#endif  // LTREG_COMPONENT_COMPONENT_CHECK_H
