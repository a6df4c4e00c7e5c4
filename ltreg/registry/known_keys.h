// Which keys are there, for who asks often.
#ifndef LTREG_REGISTRY_KNOWN_KEYS_H
#define LTREG_REGISTRY_KNOWN_KEYS_H

#include <string>
#include <unordered_map>
#include <unordered_set>

#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/key_argument.h"

namespace ltreg {

/// Asks for the sub-keys of each parent but once: a key is found in a store file's tree by going
/// through all its siblings.
class KnownKeys {
 public:
  /// Whether a key is there that is no root. `subKeys(parent)` lists the names below a path.
  template <class SubKeys>
  [[nodiscard]] bool contains(const std::string& path, SubKeys subKeys) {
    const std::string parent(parentPath(path));
    const auto [found, isNew] = m_children.try_emplace(foldedName(parent));
    if (isNew) {
      for (const std::string& name : subKeys(parent)) {
        found->second.insert(foldedName(name));
      }
    }
    return found->second.contains(foldedName(lastComponent(path)));
  }

  /// Notes that a key has come, with its parents, or has gone with all below it.
  void add(std::string_view path);
  void remove(std::string_view path);

 private:
  std::unordered_map<std::string, std::unordered_set<std::string>> m_children;
};

}  // namespace ltreg

#endif  // LTREG_REGISTRY_KNOWN_KEYS_H
