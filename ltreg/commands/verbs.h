// The table of the tool's verbs, in the order in which its help tells them.
#ifndef LTREG_COMMANDS_VERBS_H
#define LTREG_COMMANDS_VERBS_H

#include <vector>

#include "ltreg/cli/verb.h"

namespace ltreg {

[[nodiscard]] std::vector<Verb> allVerbs();

}  // namespace ltreg

#endif  // LTREG_COMMANDS_VERBS_H
