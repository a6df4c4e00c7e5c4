// A key and all below it, read as a whole.
#ifndef LTREG_REGISTRY_BRANCH_H
#define LTREG_REGISTRY_BRANCH_H

#include <string>

#include "ltreg/registry/key_content.h"
#include "ltreg/registry/session.h"

namespace ltreg {

/// Throws Failure where something cannot be read.
[[nodiscard]] Branch readBranch(Session& session, const std::string& top);

/// The path of what lies below another one; either may be empty.
[[nodiscard]] std::string joinPaths(const std::string& path, const std::string& below);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_BRANCH_H
