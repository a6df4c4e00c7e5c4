// Has hash maps find names that lie in a text without a copy of them.
#ifndef LTLIB_VARIABLES_NAME_HASH_H
#define LTLIB_VARIABLES_NAME_HASH_H

#include <cstddef>
#include <functional>
#include <string_view>

namespace LTLib::detail {

struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const {
    return std::hash<std::string_view>()(name);
  }
};

}  // namespace LTLib::detail

#endif  // LTLIB_VARIABLES_NAME_HASH_H
