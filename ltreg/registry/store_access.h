// Getting at a store file: its locks and its report.
#ifndef LTREG_REGISTRY_STORE_ACCESS_H
#define LTREG_REGISTRY_STORE_ACCESS_H

#include <memory>
#include <string>

#include "ltlib/ltlib.h"

namespace ltreg {

enum class Access { kRead, kWrite };

/// A store that was looked at, and what keeps others away from it; null where that was not to be had,
/// which the report tells, and for a store that is read without a lock.
struct GuardedStore {
  std::unique_ptr<LTLib::StoreGuard> guard;
  LTLib::StoreReport report;
  std::string abandoned;  // what was told of a process that has ended while it held a lock
};

/// Waits for the locks of a store and looks at it under them. What reads goes on with a warning where
/// a process has ended while it held a lock, which is told once, and where the folder has no lock to
/// take; what writes has to stop there.
[[nodiscard]] GuardedStore openStore(const std::string& pathname, Access access);

/// The report of a store, for reading.
[[nodiscard]] LTLib::StoreReport checkedStore(const std::string& pathname);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_STORE_ACCESS_H
