/// \file
/// \brief Waiting for a store that others hold: who they are, for how long, and doing without.
///
/// Threads: all may be called from any thread. storeLocks waits for nobody, so that one thread may
/// ask what another one waits for.
///
/// Ownership: what is given is a copy.
///
/// Failure: results; only memory can run out.
#ifndef LTLIB_FILEREGISTRY_STORE_STORE_WAIT_H
#define LTLIB_FILEREGISTRY_STORE_STORE_WAIT_H

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "ltlib/export.h"

namespace LTLib {

/// One of the locks that are taken for a store.
struct StoreLock {
  std::string name;          ///< of a named mutex; empty for the lock on the identity file
  std::string place;         ///< the file that the system locks, or the name again
  std::uint32_t holder = 0;  ///< another process that holds it; 0 where that cannot be told
  std::string program;       ///< that process's name, where the system tells it
};

/// The locks of a store's folder, in the order in which they are taken: that under which the folder's
/// identity file is looked at, the folder's named mutex, and the lock on that file. Nothing is made
/// or locked; without an identity file the first one is all.
[[nodiscard]] LTLIB_EXPORT std::vector<StoreLock> storeLocks(const std::string& pathname);

/// From now on each wait of this process for a lock of another process ends after that time. What
/// waits then fails as it does where the system refuses the lock. Without a call there is no limit.
/// Requires: more than nothing, and a day at most.
LTLIB_EXPORT void limitStoreWaits(std::chrono::milliseconds limit) noexcept;

/// Has this process read a store without the folder's locks, if the folder has no identity file that
/// can be read and none can be made there. False where the locks can be had, which stay in force
/// then. What is read may be half of a save where the system cannot replace a file in one step. For
/// readers alone: a save would not know of others.
[[nodiscard]] LTLIB_EXPORT bool readWithoutLock(const std::string& pathname);

}  // namespace LTLib

#endif  // LTLIB_FILEREGISTRY_STORE_STORE_WAIT_H
