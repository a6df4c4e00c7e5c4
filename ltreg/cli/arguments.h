// From the command line to a request.
#ifndef LTREG_CLI_ARGUMENTS_H
#define LTREG_CLI_ARGUMENTS_H

#include <string>
#include <vector>

#include "ltreg/cli/request.h"
#include "ltreg/cli/verb.h"

namespace ltreg {

/// What to do: run a command, or with a null one print a text that was asked for.
struct Invocation {
  Command command = nullptr;
  Request request;
  std::string text;
};

/// Throws Failure with kUsage for a command line that makes no sense of the verbs.
[[nodiscard]] Invocation parseArguments(int count, const char* const* words,
                                        const std::vector<Verb>& verbs);

}  // namespace ltreg

#endif  // LTREG_CLI_ARGUMENTS_H
