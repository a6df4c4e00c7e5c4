// The five trees of the process and the locks that guard them.
//
// Lock order, outermost first: the tree's lock, the stores' lock, "qs_config_lock", a directory's
// named mutex, the system's lock on its identity file. Everything here is built at first use and
// never destroyed, so that a destructor that runs late in the process still finds it. Forks take
// the first two locks, or pass by a thread that waits for one of the others: by then all that is
// kept here has to be whole.
#ifndef LTLIB_FILEREGISTRY_TREE_ROOTS_H
#define LTLIB_FILEREGISTRY_TREE_ROOTS_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "ltlib/fileregistry/tree/config_tree.h"
#include "ltlib/foundation/mutex.h"
#include "ltlib/platform/files.h"
#include "ltlib/registry/registry_manager.h"

/// An open key of the file backend: a root and a path. It points at nothing in the tree.
struct QSFileKeyHandle {
  void* root = nullptr;  // the root's predefined handle
  std::string path;      // components joined by one backslash
};

/// How often the attempts to load a root have delivered each field, by folded path and name.
using QSCfgDelivered = std::unordered_map<std::string, std::size_t>;

/// The last walk along a key path that led to a section, so that the next operation on the same key
/// need not repeat it. Void once any section goes.
struct QSCfgLastWalk {
  std::string path;
  QSCfgDataSection* section = nullptr;
};

/// One registry root.
struct QSCfgRoot {
  enumRegRoot root = REG_ROOT_NONE;
  std::unique_ptr<QSCfgDataSection> section;  // null until the first touch of any root
  std::string fileName;                       // where the last load read
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

/// An identity file whose lock this process holds, and how often.
struct HeldFolder {
  Platform::FileIdentity identity;
  Platform::FileHandle file;
  std::size_t depth = 0;
};

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

/// Guards what follows and, against other threads of this process, the store files.
[[nodiscard]] Mutex& storeLock();

/// From a store file's pathname, as it was given, to the name of its directory's lock.
[[nodiscard]] std::map<std::string, std::string>& lockNames();

[[nodiscard]] std::vector<HeldFolder>& heldFolders();

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_ROOTS_H
