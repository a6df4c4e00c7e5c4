// The differences between two store files, told by a process of its own: the trees of this one load
// once.
#ifndef LTREG_COMMANDS_FILE_DIFFERENCES_H
#define LTREG_COMMANDS_FILE_DIFFERENCES_H

#include <string>
#include <vector>

#include "ltlib/ltlib.h"

namespace ltreg {

/// The lines of 'ltreg diff BEFORE AFTER', with their keys below that root; the first MiB of them, with
/// a warning where there is more. Throws Failure where they cannot be had.
[[nodiscard]] std::vector<std::string> differencesBetween(const std::string& before,
                                                          const std::string& after,
                                                          enumRegRoot root);

}  // namespace ltreg

#endif  // LTREG_COMMANDS_FILE_DIFFERENCES_H
