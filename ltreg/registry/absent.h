// The end of a command whose key or value is not there, with what was most likely meant.
#ifndef LTREG_REGISTRY_ABSENT_H
#define LTREG_REGISTRY_ABSENT_H

#include <string>

#include "ltreg/registry/session.h"

namespace ltreg {

/// Throw Failure with kAbsent.
[[noreturn]] void throwAbsentKey(Session& session, const KeyArgument& key);
[[noreturn]] void throwAbsentValue(Session& session, const KeyArgument& key,
                                   const std::string& name);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_ABSENT_H
