// Walks along key paths from the top of a root's tree.
#ifndef LTLIB_FILEREGISTRY_TREE_TREE_WALK_H
#define LTLIB_FILEREGISTRY_TREE_TREE_WALK_H

#include <string_view>

#include "ltlib/fileregistry/tree/config_tree.h"
#include "ltlib/fileregistry/tree/roots.h"

namespace LTLib::detail {

/// The section that a handle's path leads to, or null. Requires: the tree's lock is held.
[[nodiscard]] QSCfgDataSection* findSection(QSFileKeyHandle& key);

/// A way along a path that adds the sections which are missing; a path that is no more than a name in
/// brackets adds a section each time. What it adds stays with `keep` and goes with the object
/// otherwise, so that an operation that fails before leaves nothing behind. Requires: the tree's lock
/// is held for writing, and nobody else changes the tree ahead of `keep`.
class MadeWay {
 public:
  MadeWay(QSCfgTree& tree, std::string_view path);
  ~MadeWay();
  MadeWay(const MadeWay&) = delete;
  MadeWay& operator=(const MadeWay&) = delete;

  /// Null if the path leads to no section, whatever is added.
  [[nodiscard]] QSCfgDataSection* section() const { return m_section; }

  void keep() { m_joint = m_tip; }

 private:
  void takeBack() noexcept;
  void goOn(std::string_view name);

  QSCfgTree& m_tree;
  QSCfgDataSection* m_tip;    // where the way has come to
  QSCfgDataSection* m_joint;  // from where on it was added
  QSCfgDataSection* m_section = nullptr;
};

/// Destroys the section of a key. False if there is none, or it has children. Requires: as for
/// MadeWay.
bool removeSectionOf(QSFileKeyHandle& key);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_TREE_WALK_H
