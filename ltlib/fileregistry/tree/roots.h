// The five roots of the process, and the lock that guards their trees.
//
// One lock for all trees, taken ahead of every lock of the store (store_lock.h) and held through a
// whole load or save. What stands here is built at first use and never destroyed, so that a
// destructor that runs late in the process still finds it. Forks take the lock, so that a child's
// trees are whole.
#ifndef LTLIB_FILEREGISTRY_TREE_ROOTS_H
#define LTLIB_FILEREGISTRY_TREE_ROOTS_H

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "ltlib/fileregistry/tree/config_tree.h"
#include "ltlib/foundation/mutex.h"
#include "ltlib/registry/registry_manager.h"

/// An open key of the file backend: a root and a path. It points at nothing in the tree.
struct QSFileKeyHandle {
  void* root = nullptr;  // the root's predefined handle
  std::string path;      // components joined by one backslash
};

/// How often the attempts to load a root have delivered each field, by folded path and name: the
/// most that any one of them did. Empty once a load came to its end, since none follows.
using QSCfgDelivered = std::unordered_map<std::string, std::size_t>;

/// The last walk along a key path that led to a section, so that the next operation on the same key
/// need not repeat it. It stays true while sections are added, since they come in behind their
/// namesakes; removeSectionOf, the one way by which a section of a root's tree goes, sets it right.
struct QSCfgLastWalk {
  std::string path;
  QSCfgDataSection* section = nullptr;
};

/// One registry root.
struct QSCfgRoot {
  enumRegRoot root = REG_ROOT_NONE;
  std::unique_ptr<QSCfgDataSection> section;  // null until the first touch of any root
  std::uint16_t lineCount = 0;                // lines read, for syntax messages
  bool touched = false;                       // a tree operation has asked for this root
  bool loaded = false;                        // the store file was read to its end
  bool loadFailed = false;                    // the last attempt to read it failed
  std::string unreadable;                     // why a file that is there counted as empty
  std::string leftBehind;                     // a missing store beside which a save's files lie
  QSCfgDelivered delivered;                   // by attempts that failed
  QSCfgLastWalk lastWalk;
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

/// Makes the root sections that are missing. Requires: the tree's lock is held.
void makeRootSections();

/// Guards the trees and the root records.
[[nodiscard]] Mutex& treeLock();

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_ROOTS_H
