// What the first expansion of a process adds to the variables from outside the program.
#ifndef LTLIB_VARIABLES_FIRST_USE_LOAD_H
#define LTLIB_VARIABLES_FIRST_USE_LOAD_H

#include <functional>
#include <optional>
#include <string>

class QSConfigVariableManager;

namespace LTLib::detail {

/// The first word of the file config.dat beside the library, which may be empty; none when there
/// is no such file, or its first word is longer than 512 bytes.
[[nodiscard]] std::optional<std::string> readConfigFile();

/// Adds the values of the registry key %PublicVariables%, expanding that name through `manager`.
/// A missing key and unreadable values are no failures; exceptions of the registry pass through.
void loadPublicVariables(QSConfigVariableManager& manager);

/// The two sources, in the order in which they are asked.
struct FirstUseSources {
  std::function<std::optional<std::string>()> readConfigFile = detail::readConfigFile;
  std::function<void(QSConfigVariableManager&)> loadPublicVariables = detail::loadPublicVariables;
};

}  // namespace LTLib::detail

#endif  // LTLIB_VARIABLES_FIRST_USE_LOAD_H
