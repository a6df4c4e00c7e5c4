// Putting a new store file in the place of the present one.
#ifndef LTLIB_FILEREGISTRY_STORE_SWAP_H
#define LTLIB_FILEREGISTRY_STORE_SWAP_H

#include <string>

namespace LTLib::detail {

/// Makes `newName` the store file and the present store file, if there is one, its "_old" sister.
/// At no moment is the store file absent, where the system has second names for files. Throws
/// QSException with both as they were. Requires: the directory's lock is held.
void swapStore(const std::string& newName, const std::string& pathname);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_STORE_SWAP_H
