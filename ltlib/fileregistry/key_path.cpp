#include "ltlib/fileregistry/key_path.h"

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

void dropTrailingBackslash(std::string& path) {
  if (!path.empty() && path.back() == '\\') {
    path.pop_back();
  }
}

QSCfgDataSection* cfgResolveSection(std::string& path, QSCfgDataSection& root, bool create) {
  dropTrailingBackslash(path);
  if (lacksFirstComponent(path)) {
    const std::string_view name = create ? bracketedName(path) : std::string_view{};
    return name.empty() ? nullptr : &root.addSection(name);
  }
  QSCfgDataSection* section = &root;
  const bool whole = splitKeyPath(path, [&](std::string_view component) {
    section = create ? &section->findOrAddSection(component) : section->findSection(component);
    return section != nullptr;
  });
  return whole ? section : nullptr;
}

}  // namespace LTLib::detail
