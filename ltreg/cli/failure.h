// How the tool ends when it cannot do what it was asked for.
#ifndef LTREG_CLI_FAILURE_H
#define LTREG_CLI_FAILURE_H

#include <stdexcept>
#include <string>

namespace ltreg {

/// The exit codes, which scripts go by.
enum class ExitCode : int {
  kDone = 0,
  kAbsent = 1,       // the key, value or file is not there
  kUsage = 2,        // the command line makes no sense
  kBadInput = 3,     // a key, name, type or value that cannot be used
  kStoreFailed = 4,  // the store, its lock or the output failed
  kConflict = 6,     // the store changed on disk since it was read
};

/// Ends a command: the exit code, and a message that tells what, where and what to do.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), m_code(code) {}

  [[nodiscard]] ExitCode code() const { return m_code; }

 private:
  ExitCode m_code;
};

/// A manager's number in words: the operating system's registry gives that system's own.
[[nodiscard]] std::string describeFailure(int result);

/// Throws Failure for a manager's number other than 0. `what` was to be done.
void demandDone(int result, const std::string& what);

/// Writes a line to standard error, with the tool's name in front.
void complain(const std::string& message);

}  // namespace ltreg

#endif  // LTREG_CLI_FAILURE_H
