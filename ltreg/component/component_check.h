// What is wrong with a class, if anything is.
#ifndef LTREG_COMPONENT_COMPONENT_CHECK_H
#define LTREG_COMPONENT_COMPONENT_CHECK_H

#include <optional>
#include <string>

#include "ltreg/cli/request.h"
#include "ltreg/component/component_verdict.h"
#include "ltreg/registry/value.h"

namespace ltreg {

/// Looks at a class's entry, at the file that it names, and at what the library does in a process of
/// its own. Throws Failure if it cannot be tried.
[[nodiscard]] Verdict verdictOn(const Request& request, const std::string& id,
                                const std::optional<Value>& entry);

ExitCode checkClass(const Request& request, Output& output);
ExitCode probeClass(const Request& request, Output& output);

}  // namespace ltreg

#endif  // LTREG_COMPONENT_COMPONENT_CHECK_H
