/// \file
/// \brief Reading a root of the file registry anew, as its store file stands now.
///
/// A process reads a root once; what others save later it does not see. A program that follows them
/// reads the root anew, and one that changes it does so under an LTLib::StoreGuard.
///
/// Threads: any thread at any time. What others do to the root meanwhile comes ahead of the reading
/// or behind it.
///
/// Ownership: open handles and the objects on them stay good; they name keys by their paths.
///
/// Failure: a negative result, or what a load throws: QSException, or std::length_error where the
/// store's folder is missing or cannot be written.
#ifndef LTLIB_FILEREGISTRY_STORE_STORE_RELOAD_H
#define LTLIB_FILEREGISTRY_STORE_STORE_RELOAD_H

#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/registry/registry_manager.h"

namespace LTLib {

/// What becomes of changes that this process has made to a root and not saved.
enum class UnsavedChanges { kAreKept, kAreDropped };

/// Changes that are not saved stand in the way of a reload.
inline constexpr QSResult kHasChanges = resultFromSystemError(2401);

/// Replaces what this process has of a root by what its store file holds: 0; kHasChanges, with
/// nothing changed, where there are changes that are to be kept; or 0x80004005 where the file cannot
/// be opened, with the reason in lastStoreFailure. After any failure all is as it was, unless changes
/// are to be dropped: these go, and the next touch of the root reads the file. On the operating
/// system's backend, whose readers see every change at once, and for a root that has no file, nothing
/// happens and the result is 0.
[[nodiscard]] LTLIB_EXPORT QSResult reloadStore(enumRegRoot root,
                                                UnsavedChanges unsaved = UnsavedChanges::kAreKept);

}  // namespace LTLib

#endif  // LTLIB_FILEREGISTRY_STORE_STORE_RELOAD_H
