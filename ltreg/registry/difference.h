// What two registries do not have in common.
#ifndef LTREG_REGISTRY_DIFFERENCE_H
#define LTREG_REGISTRY_DIFFERENCE_H

#include <optional>
#include <string>
#include <vector>

#include "ltreg/registry/key_content.h"

namespace ltreg {

/// A value that one of the two has alone, or has otherwise.
struct ValueDifference {
  std::optional<NamedValue> before;
  std::optional<NamedValue> after;
};

/// A key that one of the two has alone, or that holds other values.
struct KeyDifference {
  std::string below;  // the path from the top
  bool wasThere = true;
  bool isThere = true;
  std::vector<ValueDifference> values;
};

/// The keys of the first in their order, and then those of the second alone.
using Difference = std::vector<KeyDifference>;

[[nodiscard]] Difference differenceOf(Branch before, Branch after);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_DIFFERENCE_H
