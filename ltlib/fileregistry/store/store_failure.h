/// \file
/// \brief Why a store was not read or not saved, where the result alone does not tell.
///
/// Threads: each thread has a text of its own, that of its own last failure.
///
/// Ownership: the text is a copy.
///
/// Failure: only memory can run out.
#ifndef LTLIB_FILEREGISTRY_STORE_STORE_FAILURE_H
#define LTLIB_FILEREGISTRY_STORE_STORE_FAILURE_H

#include <string>

#include "ltlib/export.h"

namespace LTLib {

/// What went wrong with the last load or save of a store file by the calling thread that did not
/// go well, as a sentence for people: a save that gave 0x80004005, a load that threw, a store that
/// counts as empty since it cannot be opened, or one that is missing beside what a save has left.
/// Empty as long as all went well; a later success does not clear it. Throws std::bad_alloc alone.
[[nodiscard]] LTLIB_EXPORT std::string lastStoreFailure();

namespace detail {

/// Keeps "the store PATH EVENT: REASON" for lastStoreFailure; without memory for it, no text.
void noteStoreFailure(const std::string& path, const char* event, const char* reason) noexcept;

/// Keeps a text, and writes it to the trace, for what no exception tells of.
void traceStoreFailure(const std::string& text);

}  // namespace detail
}  // namespace LTLib

#endif  // LTLIB_FILEREGISTRY_STORE_STORE_FAILURE_H
