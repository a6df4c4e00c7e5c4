// The argument KEY: a root's name, a backslash and a path.
#ifndef LTREG_REGISTRY_KEY_ARGUMENT_H
#define LTREG_REGISTRY_KEY_ARGUMENT_H

#include <string>
#include <string_view>

#include "ltlib/ltlib.h"

namespace ltreg {

struct KeyArgument {
  enumRegRoot root = REG_ROOT_NONE;
  std::string path;  // components joined by one backslash; empty for the root itself
};

/// The root of that name or short form, in any letter case. Throws Failure for any other text.
[[nodiscard]] enumRegRoot parseRoot(std::string_view text);

/// The root and the path with its references as they are. Throws Failure for an unknown root and
/// for a path with an empty component.
[[nodiscard]] KeyArgument parseKey(std::string_view text);

/// The path with its references expanded and without a trailing backslash. Throws Failure if one
/// does not expand, and for a path with an empty component then.
[[nodiscard]] std::string expandPath(const std::string& path);

/// The key with its root's full name.
[[nodiscard]] std::string fullName(enumRegRoot root, std::string_view path);

/// The last component of a path, and what stands in front of it without the backslash.
[[nodiscard]] std::string_view lastComponent(std::string_view path);
[[nodiscard]] std::string_view parentPath(std::string_view path);

/// What leads from a path to one at or below it; empty for the path itself.
[[nodiscard]] std::string pathBelow(const std::string& path, std::string_view top);

/// Whether a path is another one or leads on from it, as the registry compares names.
[[nodiscard]] bool isAtOrBelow(std::string_view path, std::string_view top);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_KEY_ARGUMENT_H
