// The rules look odd together: they are those by which paths have always been read, and stores hold
// keys that were made by them.
#include "ltlib/fileregistry/tree/key_path.h"

namespace LTLib::detail {

std::string_view bracketedName(std::string_view path) {
  const std::size_t open = path.find('[');
  if (open == std::string_view::npos) {
    return {};
  }
  const std::size_t close = path.find(']', open + 1);
  return close != std::string_view::npos ? path.substr(open + 1, close - open - 1)
                                         : std::string_view{};
}

bool lacksFirstComponent(std::string_view path) {
  const std::size_t end = path.find('\\');
  return end == std::string_view::npos || end == 0;
}

}  // namespace LTLib::detail
