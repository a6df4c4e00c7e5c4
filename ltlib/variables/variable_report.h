/// \file
/// \brief A look into the configuration variables, for tools: what is defined, where it came from,
/// and how a text expands step by step.
///
/// Threads: both functions may be called from any thread.
///
/// Failure: only memory can run out; the standard library's exception then reaches the caller.
#ifndef LTLIB_VARIABLES_VARIABLE_REPORT_H
#define LTLIB_VARIABLES_VARIABLE_REPORT_H

#include <string>
#include <vector>

#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"

namespace LTLib {

/// Where a variable's value came from.
enum class VariableOrigin {
  kDefault,         // the library's own table
  kRegistered,      // AddVariable, AddVariables or a registrar
  kChanged,         // SetVariable
  kConfigFile,      // the file config.dat beside the library
  kPublicVariable,  // the registry
};

/// A variable, as of one moment.
struct VariableReport {
  std::string name;
  std::string value;  // raw, not expanded
  VariableOrigin origin = VariableOrigin::kDefault;
};

/// All variables, in the byte order of their names, as of one moment. What the first expansion
/// loads is among them only after that; expand any text to have it. Empty after the teardown at
/// the end of the process.
[[nodiscard]] LTLIB_EXPORT std::vector<VariableReport> reportVariables();

/// One replacement of an expansion.
struct ExpansionStep {
  std::string name;
  std::string replacement;
  std::string text;  // the whole text after it
};

/// Expands `text` as QSExpandString does, with the same result, and appends each replacement to
/// `steps` in the order in which they were made, those ahead of a failure as well. The steps stop
/// once they take 16 MiB, of which each has a copy of the text; the expansion goes on. They are
/// whole if the last one's text is what `text` has become.
LTLIB_EXPORT QSResult traceExpansion(std::string& text, std::vector<ExpansionStep>& steps);

}  // namespace LTLib

#endif  // LTLIB_VARIABLES_VARIABLE_REPORT_H
