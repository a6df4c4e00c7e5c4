// The manual page, made from the table of verbs.
#ifndef LTREG_CLI_MANUAL_H
#define LTREG_CLI_MANUAL_H

#include <string>
#include <vector>

#include "ltreg/cli/verb.h"

namespace ltreg {

/// The words of a verb with those of its group, as it is asked for.
[[nodiscard]] std::string wordsOf(const Verb& verb);

/// How a verb is asked for, as "get KEY NAME... [--default TEXT]".
[[nodiscard]] std::string usageOf(const Verb& verb);

/// The text for the formatter that `man` calls.
[[nodiscard]] std::string manualPage(const std::vector<Verb>& verbs);

}  // namespace ltreg

#endif  // LTREG_CLI_MANUAL_H
