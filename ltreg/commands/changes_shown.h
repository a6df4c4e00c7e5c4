// Differences as the commands show them.
#ifndef LTREG_COMMANDS_CHANGES_SHOWN_H
#define LTREG_COMMANDS_CHANGES_SHOWN_H

#include <string>

#include "ltreg/cli/request.h"
#include "ltreg/registry/difference.h"
#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/session.h"

namespace ltreg {

/// Writes a line for what one side has alone or otherwise, or with --json an array. `defaultName` is
/// what values without a name are shown by.
void showDifference(const Request& request, Output& output, const KeyArgument& top,
                    const Difference& difference, const std::string& defaultName);

/// The end of a command that changes a root: saves, or with --dry-run shows what would have changed.
ExitCode conclude(const Request& request, Output& output, Session& session, enumRegRoot root);

}  // namespace ltreg

#endif  // LTREG_COMMANDS_CHANGES_SHOWN_H
