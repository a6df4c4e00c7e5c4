// From the command line to a request.
#ifndef LTREG_CLI_ARGUMENTS_H
#define LTREG_CLI_ARGUMENTS_H

#include <memory>
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

/// Makes sense of command lines by the verbs, one after the other.
class CommandParser {
 public:
  explicit CommandParser(const std::vector<Verb>& verbs);
  ~CommandParser();

  /// `words` are those behind the tool's own name. Throws Failure with kUsage for a command line that
  /// makes no sense.
  [[nodiscard]] Invocation parse(const std::vector<std::string>& words);

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

[[nodiscard]] Invocation parseArguments(int count, const char* const* words,
                                        const std::vector<Verb>& verbs);

}  // namespace ltreg

#endif  // LTREG_CLI_ARGUMENTS_H
