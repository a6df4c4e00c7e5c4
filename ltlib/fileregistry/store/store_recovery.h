/// \file
/// \brief What saves leave beside a store, and putting one of these versions back.
///
/// Threads: may be called from any thread; the process's own trees are not touched, so that a root
/// that was read already goes on with what was read.
///
/// Ownership: what is given is a copy.
#ifndef LTLIB_FILEREGISTRY_STORE_STORE_RECOVERY_H
#define LTLIB_FILEREGISTRY_STORE_STORE_RECOVERY_H

#include <cstddef>
#include <string>
#include <vector>

#include "ltlib/export.h"

namespace LTLib {

/// A file beside a store that holds another version of it.
struct StoreVersion {
  std::string path;
  bool newer = false;     ///< what a save was about to bring in, and not what it replaced
  bool leftOver = false;  ///< not the "_old" that every save leaves, but the rest of one cut off
};

/// The versions that are there, newer ones first, and each as a save names it ahead of those that were
/// set aside. Only memory can run out.
[[nodiscard]] LTLIB_EXPORT std::vector<StoreVersion> storeVersions(const std::string& pathname);

/// Makes one of these files the store. Gives the name that the present store bears from then on,
/// which no save uses; empty where there was none. Throws QSException with all as it was, or with all
/// versions where the text says, and what LTLib::StoreGuard throws.
LTLIB_EXPORT std::string putBackStore(const std::string& pathname, const std::string& version);

/// Where a key and one of its values stand in a store file: the lines of the key's first header and
/// of the value that operations see, counted from 1; 0 for what is not there.
struct StorePlace {
  std::size_t header = 0;
  std::size_t value = 0;
};

/// Reads the file as a load does, under the lock of its directory. `path` is a key's path below the
/// root, with single backslashes. What cannot be read holds nothing. Throws what LTLib::StoreGuard
/// throws.
[[nodiscard]] LTLIB_EXPORT StorePlace findInStore(const std::string& pathname,
                                                  const std::string& path, const std::string& name);

}  // namespace LTLib

#endif  // LTLIB_FILEREGISTRY_STORE_STORE_RECOVERY_H
