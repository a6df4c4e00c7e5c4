// What the first expansion of a process adds to the variables from outside the program.
#ifndef LTLIB_VARIABLES_FIRST_USE_LOAD_H
#define LTLIB_VARIABLES_FIRST_USE_LOAD_H

#include <functional>
#include <optional>
#include <string>

namespace LTLib::detail {

/// The first word of the file config.dat beside the library, which may be empty; none when there
/// is no such file, or its first word is longer than 512 bytes.
[[nodiscard]] std::optional<std::string> readConfigFile();

/// Takes a variable that somebody has found.
using TakeVariable = std::function<void(const std::string& name, const std::string& value)>;

/// Hands over the values of the registry key %PublicVariables%. A missing key and unreadable values
/// are no failures; exceptions of the registry pass through.
void loadPublicVariables(const TakeVariable& take);

/// The two sources, in the order in which they are asked.
struct FirstUseSources {
  std::function<std::optional<std::string>()> readConfigFile = detail::readConfigFile;
  std::function<void(const TakeVariable&)> loadPublicVariables = detail::loadPublicVariables;
};

}  // namespace LTLib::detail

#endif  // LTLIB_VARIABLES_FIRST_USE_LOAD_H
