// The five roots of the process, and the handles that name their keys.
//
// One lock for all trees (tree_lock.h), taken ahead of every lock of the store (store_lock.h) and held
// for writing through a whole load or save. What stands here is built at first use and never
// destroyed, so that a destructor that runs late in the process still finds it. Forks take the lock,
// so that a child's trees are whole.
#ifndef LTLIB_FILEREGISTRY_TREE_ROOTS_H
#define LTLIB_FILEREGISTRY_TREE_ROOTS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "ltlib/fileregistry/tree/config_tree.h"
#include "ltlib/registry/registry_manager.h"

/// An open key of the file backend: a root and a path, whose components one backslash joins. What it
/// remembers of the tree spares a search and is looked through again before it is used.
class QSFileKeyHandle {
 public:
  /// In one block with a copy of the path.
  static std::unique_ptr<QSFileKeyHandle> make(void* root, std::string_view path) {
    return std::unique_ptr<QSFileKeyHandle>(new (path) QSFileKeyHandle(root, path));
  }

  /// The root's predefined handle.
  [[nodiscard]] void* root() const { return m_root; }
  [[nodiscard]] std::string_view path() const {
    return {reinterpret_cast<const char*>(this + 1), m_pathSize};
  }
  /// Removes the one backslash that the path may end in.
  void dropTrailingBackslash();

  /// Where the path leads in that tree; null if nothing is known, or no longer true.
  [[nodiscard]] QSCfgDataSection* remembered(const QSCfgTree& tree) const {
    return m_generation == tree.generation() ? m_section : nullptr;
  }
  void remember(const QSCfgTree& tree, QSCfgDataSection& section) {
    m_section = &section;
    m_generation = tree.generation();
  }

  /// The place of the field that was last asked for.
  std::size_t fieldHint = LTLib::detail::FieldList::kNowhere;

  QSFileKeyHandle(const QSFileKeyHandle&) = delete;
  QSFileKeyHandle& operator=(const QSFileKeyHandle&) = delete;
  static void operator delete(void* memory) { ::operator delete(memory); }

 private:
  QSFileKeyHandle(void* root, std::string_view path);
  static void* operator new(std::size_t size, std::string_view path) {
    return ::operator new(size + path.size());
  }
  static void operator delete(void* memory, std::string_view /*path*/) {
    ::operator delete(memory);
  }

  void* m_root;
  std::size_t m_pathSize;
  QSCfgDataSection* m_section = nullptr;
  std::uint64_t m_generation = 0;  // no tree's
};

/// How often the attempts to load a root have delivered each field, by folded path and name: the
/// most that any one of them did. Empty once a load came to its end, since none follows.
using QSCfgDelivered = std::unordered_map<std::string, std::size_t>;

/// One registry root.
struct QSCfgRoot {
  enumRegRoot root = REG_ROOT_NONE;
  std::unique_ptr<QSCfgTree> tree;  // null until the first touch of any root
  std::uint16_t lineCount = 0;      // lines read, for syntax messages
  bool touched = false;             // a tree operation has asked for this root
  bool loaded = false;              // the store file was read to its end
  bool loadFailed = false;          // the last attempt to read it failed
  bool changed = false;             // the tree may hold what its own store file does not
  std::string unreadable;           // why a file that is there counted as empty
  std::string leftBehind;           // a missing store beside which a save's files lie
  QSCfgDelivered delivered;         // by attempts that failed
};

namespace LTLib::detail {

/// How far a handle lies above the first of the six predefined ones of the system.
[[nodiscard]] inline std::uintptr_t placeOfPredefined(const void* handle) {
  return reinterpret_cast<std::uintptr_t>(handle) + 0x80000000u;
}

/// The root that a handle's `root` names; HKEY_LOCAL_MACHINE for anything that is no root.
/// Requires: the tree's lock is held.
[[nodiscard]] QSCfgRoot& cfgRootOf(const void* rootHandle);

/// Whether the handle is exactly one of the five predefined ones.
[[nodiscard]] bool isRootHandle(const void* handle);

/// Makes the trees that are missing. Requires: the tree's lock is held for writing.
void makeTrees();

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_ROOTS_H
