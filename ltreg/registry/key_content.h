// Keys with their values, away from any registry.
#ifndef LTREG_REGISTRY_KEY_CONTENT_H
#define LTREG_REGISTRY_KEY_CONTENT_H

#include <string>
#include <vector>

#include "ltreg/registry/value.h"

namespace ltreg {

struct KeyContent {
  std::string below;  // the path from the top; empty for the top itself
  std::vector<NamedValue> values;
};

/// Parents stand ahead of their children.
using Branch = std::vector<KeyContent>;

}  // namespace ltreg

#endif  // LTREG_REGISTRY_KEY_CONTENT_H
