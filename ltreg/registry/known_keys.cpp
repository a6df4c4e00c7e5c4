#include "ltreg/registry/known_keys.h"

namespace ltreg {

void KnownKeys::add(std::string_view path) {
  for (; !path.empty(); path = parentPath(path)) {
    const auto parent = m_children.find(foldedName(parentPath(path)));
    // What is known has known parents.
    if (parent != m_children.end() &&
        !parent->second.insert(foldedName(lastComponent(path))).second) {
      return;
    }
  }
}

void KnownKeys::remove(std::string_view path) {
  m_children.erase(foldedName(path));
  const auto parent = m_children.find(foldedName(parentPath(path)));
  if (parent != m_children.end()) {
    parent->second.erase(foldedName(lastComponent(path)));
  }
}

}  // namespace ltreg
