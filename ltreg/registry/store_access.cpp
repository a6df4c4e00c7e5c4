#include "ltreg/registry/store_access.h"

#include <stdexcept>
#include <utility>

#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/lock_notice.h"

namespace ltreg {
namespace {

using Kind = LTLib::StoreFaultKind;

// That of the machine, under which the other one's name is found, and that of the folder.
constexpr int kLocksOfAStore = 2;

bool isKind(const LTLib::StoreReport& report, Kind kind) {
  return report.fault && report.fault->kind == kind;
}

bool wasAbandoned(const LTLib::StoreReport& report) {
  return isKind(report, Kind::kLockFailed) &&
         report.fault->text.find("(abandoned)") != std::string::npos;
}

// The guard comes ahead of the check: what another process saved between the two would be loaded
// unchecked, and what it saved after a load without the guard would be overwritten.
GuardedStore lockAndCheck(const std::string& pathname) {
  const LockNotice notice(pathname);
  GuardedStore store;
  try {
    store.guard = std::make_unique<LTLib::StoreGuard>(pathname);
    store.report = LTLib::checkStoreFile(pathname);
  } catch (const QSException& failure) {
    store.report.fault = LTLib::StoreFault{Kind::kLockFailed, 0, failure.What()};
  } catch (const std::length_error& failure) {
    store.report.fault = LTLib::StoreFault{Kind::kNoIdentity, 0, failure.what()};
  }
  return store;
}

}  // namespace

// Saves are whole or not at all, so that there is something to read whatever the lock's owner was at;
// who changes something has to look first at what it left undone.
GuardedStore openStore(const std::string& pathname, Access access) {
  GuardedStore store = lockAndCheck(pathname);
  if (access == Access::kWrite) {
    return store;
  }
  for (int lock = 0; lock < kLocksOfAStore && wasAbandoned(store.report); ++lock) {
    std::string abandoned = escapeControls(store.report.fault->text);
    complain("warning: a process ended while it held a lock: " + abandoned);
    store = lockAndCheck(pathname);
    store.abandoned = std::move(abandoned);
  }
  if (isKind(store.report, Kind::kNoIdentity) && LTLib::readWithoutLock(pathname)) {
    const std::string why = escapeControls(store.report.fault->text);
    store = lockAndCheck(pathname);
    if (store.report.exists) {
      complain("warning: the store " + inQuotes(pathname) + " is read without a lock: " + why);
    }
  }
  return store;
}

LTLib::StoreReport checkedStore(const std::string& pathname) {
  return openStore(pathname, Access::kRead).report;
}

}  // namespace ltreg
