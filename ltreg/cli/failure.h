// How the tool ends when it cannot do what it was asked for.
#ifndef LTREG_CLI_FAILURE_H
#define LTREG_CLI_FAILURE_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>

namespace ltreg {

/// The exit codes, which scripts go by.
enum class ExitCode : int {
  kDone = 0,
  kAbsent = 1,           // the key, value or file is not there, or two things differ
  kUsage = 2,            // the command line makes no sense
  kBadInput = 3,         // a key, name, type, value or text that cannot be used
  kStoreFailed = 4,      // the store, its lock or the output failed
  kComponentFailed = 5,  // a class does not do what its entry promises
  kConflict = 6,         // the store changed since it was read, or two sides changed the same
};

/// The word for a code in JSON.
[[nodiscard]] const char* kindOf(ExitCode code);

/// Where in a file something is wrong.
struct FilePlace {
  std::string file;      // empty where no file is to blame
  std::size_t line = 0;  // counted from 1; 0 where no line is
};

/// Ends a command: the exit code, and a message that tells what, where and what to do.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message, FilePlace place = {})
      : std::runtime_error(message), m_code(code), m_place(std::move(place)) {}

  [[nodiscard]] ExitCode code() const { return m_code; }
  [[nodiscard]] const FilePlace& place() const { return m_place; }

 private:
  ExitCode m_code;
  FilePlace m_place;
};

/// A manager's number in words: the operating system's registry gives that system's own.
[[nodiscard]] std::string describeFailure(int result);

/// Throws Failure for a manager's number other than 0. `what` was to be done.
void demandDone(int result, const std::string& what);

/// Writes a line to standard error, with the tool's name in front.
void complain(const std::string& message);

/// Writes a failure to standard error as an object of JSON on one line.
void complainInJson(const Failure& failure);

}  // namespace ltreg

#endif  // LTREG_CLI_FAILURE_H
