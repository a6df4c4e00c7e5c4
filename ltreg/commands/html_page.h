// Registries and differences as a page for a browser: one file that needs no other and no network,
// and no script to be read.
#ifndef LTREG_COMMANDS_HTML_PAGE_H
#define LTREG_COMMANDS_HTML_PAGE_H

#include <string>
#include <utility>

#include "ltreg/cli/output.h"
#include "ltreg/registry/difference.h"
#include "ltreg/registry/key_argument.h"

namespace ltreg {

/// Writes a key and all below it, each key inside its parent. Requires: the branch has its top.
void showTreePage(Output& output, const KeyArgument& top, const Branch& branch);

/// Writes each key with both its sides. `names` are those of the sides; `defaultName` is what values
/// without a name are shown by.
void showDifferencePage(Output& output, const std::pair<std::string, std::string>& names,
                        const KeyArgument& top, const Difference& difference,
                        const std::string& defaultName);

}  // namespace ltreg

#endif  // LTREG_COMMANDS_HTML_PAGE_H
