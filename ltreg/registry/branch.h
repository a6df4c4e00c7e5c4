// A key and all below it, read as a whole.
#ifndef LTREG_REGISTRY_BRANCH_H
#define LTREG_REGISTRY_BRANCH_H

#include <string>
#include <vector>

#include "ltreg/registry/session.h"

namespace ltreg {

struct KeyContent {
  std::string below;  // the path from the top; empty for the top itself
  std::vector<NamedValue> values;
};

/// Parents stand ahead of their children.
using Branch = std::vector<KeyContent>;

/// Throws Failure where something cannot be read.
[[nodiscard]] Branch readBranch(Session& session, const std::string& top);

/// The path of what lies below another one; either may be empty.
[[nodiscard]] std::string joinPaths(const std::string& path, const std::string& below);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_BRANCH_H
