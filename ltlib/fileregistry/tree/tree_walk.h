// Walks along key paths from a root's section down.
#ifndef LTLIB_FILEREGISTRY_TREE_TREE_WALK_H
#define LTLIB_FILEREGISTRY_TREE_TREE_WALK_H

#include <memory>
#include <string_view>

#include "ltlib/fileregistry/tree/config_tree.h"
#include "ltlib/fileregistry/tree/roots.h"

namespace LTLib::detail {

/// A way down from a section. What it has to add stands apart from the tree until `join`, so that
/// an operation that fails before that leaves nothing behind.
class Branch {
 public:
  explicit Branch(QSCfgDataSection& start) : m_tip(&start), m_joint(&start) {}

  /// Where the way has come to.
  [[nodiscard]] QSCfgDataSection& tip() const { return *m_tip; }

  /// Goes to the first child of that name. Where there is none it adds one or, without `create`,
  /// gives false.
  bool go(std::string_view name, bool create);
  /// Goes to a new child.
  void add(std::string_view name);

  /// Puts what was added into the tree: all of it, or on failure nothing.
  void join();

 private:
  QSCfgDataSection* m_tip;
  QSCfgDataSection* m_joint;                  // where what was added is to hang
  std::unique_ptr<QSCfgDataSection> m_added;  // the topmost
};

/// Follows a path from the section where the branch stands. False if it leads to no section; the
/// way then goes as far as it leads. With `create` missing sections are added, and a bracketed name
/// adds a new section every time.
bool cfgResolveSection(std::string_view path, Branch& branch, bool create);

/// One walk to the section of a key, which begins where the last one below the same root ended if
/// the path goes on from there. Requires: the tree's lock is held, and the tree does not change
/// ahead of `join`, with which a walk ends unless its operation is given up.
class KeyWalk {
 public:
  KeyWalk(const QSFileKeyHandle& key, bool create);

  /// Null if the path leads to no section.
  [[nodiscard]] QSCfgDataSection* section() const { return m_section; }

  /// As Branch::join; the next walk may then begin here.
  void join();

 private:
  void remember(QSCfgLastWalk& last, std::string_view path, std::size_t shared);

  Branch m_branch;
  QSCfgDataSection* m_section = nullptr;
  QSCfgLastWalk* m_remembered = nullptr;  // where this walk is told of
};

/// Destroys the section of a key. False if there is none, or it has children. Requires: as for a
/// walk.
bool removeSectionOf(const QSFileKeyHandle& key);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_TREE_WALK_H
