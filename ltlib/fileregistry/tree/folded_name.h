// Names of keys and values compare without regard to the case of the ASCII letters; every other
// byte counts as it is, and the locale plays no part.
#ifndef LTLIB_FILEREGISTRY_TREE_FOLDED_NAME_H
#define LTLIB_FILEREGISTRY_TREE_FOLDED_NAME_H

#include <cstdint>
#include <string>
#include <string_view>

namespace LTLib::detail {

/// Whether two names are the same name.
[[nodiscard]] bool equalNames(std::string_view left, std::string_view right) noexcept;

/// The name with its letters a to z made capital.
[[nodiscard]] std::string foldedName(std::string_view name);

/// Equal for equal names below equal hashes.
[[nodiscard]] std::uint64_t hashOfName(std::string_view name, std::uint64_t above = 0) noexcept;

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_FOLDED_NAME_H
