// How a key path and the header of a block name a section.
#ifndef LTLIB_FILEREGISTRY_TREE_KEY_PATH_H
#define LTLIB_FILEREGISTRY_TREE_KEY_PATH_H

#include <string_view>

namespace LTLib::detail {

/// Hands the components of a path to `take` one after the other, while `take` gives true. False if
/// the path ends in no component or `take` gave false. A path without a backslash, or with one in
/// first place, has no components. Behind two backslashes in a row all that follows is the last
/// component.
template <class Take>
bool splitKeyPath(std::string_view path, Take take) {
  const std::size_t end = path.find('\\');
  if (end == std::string_view::npos || end == 0 || !take(path.substr(0, end))) {
    return false;
  }
  std::string_view rest = path.substr(end);
  for (std::size_t next = rest.find('\\', 1); next != std::string_view::npos && next != 1;
       next = rest.find('\\', 1)) {
    if (!take(rest.substr(1, next - 1))) {
      return false;
    }
    rest.remove_prefix(next);
  }
  return rest.size() > 1 && take(rest.substr(1));
}

/// Hands the components of a header line, from its bracket on, to `take` one after the other. False
/// if the line names no section; the components ahead of the bad one have been handed over by then.
/// Unlike in a path, two backslashes in a row lose one of them.
template <class Take>
bool splitHeader(std::string_view line, Take take) {
  if (line.back() == '\\') {
    line.remove_suffix(1);
  }
  std::string_view rest = line.substr(1);
  std::size_t end = rest.find('\\');
  if (end != std::string_view::npos && end != 0) {
    do {
      take(rest.substr(0, end));
      rest.remove_prefix(end + 1);
      end = rest.find('\\');
    } while (end != std::string_view::npos && end != 0);
    if (end == 0) {
      rest.remove_prefix(1);
    }
  }
  const std::size_t close = rest.find(']');
  if (close == std::string_view::npos || close == 0) {
    return false;
  }
  take(rest.substr(0, close));
  return true;
}

/// The text between the first opening and the next closing bracket; empty if there is none. In a
/// path without a first component it names a section right below the root.
[[nodiscard]] std::string_view bracketedName(std::string_view path);

/// Whether a path has no first component, so that only its bracketed name can lead anywhere.
[[nodiscard]] bool lacksFirstComponent(std::string_view path);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_KEY_PATH_H
