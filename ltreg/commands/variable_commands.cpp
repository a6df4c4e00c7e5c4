#include "ltreg/cli/json.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/registry/references.h"
#include "ltreg/registry/session.h"
#include "ltreg/registry/value.h"

namespace ltreg {
namespace {

using LTLib::VariableOrigin;
using LTLib::VariableReport;

const char* wordFor(VariableOrigin origin) {
  switch (origin) {
    case VariableOrigin::kDefault:
      return "default";
    case VariableOrigin::kRegistered:
      return "registered";
    case VariableOrigin::kChanged:
      return "changed";
    case VariableOrigin::kConfigFile:
      return "config.dat";
    case VariableOrigin::kPublicVariable:
      return "public";
  }
  return "unknown";
}

// The store that --store names becomes the machine root's, and what the root lies in is checked.
void openVariables(const Request& request) {
  const Backend backend(request, REG_ROOT_LOCAL_MACHINE);
  demandPublicVariables();
  loadVariables();
}

std::optional<std::string> expandedValue(const VariableReport& variable) {
  try {
    return expandReferences(variable.value);
  } catch (const Failure& failure) {
    complain("warning: the variable " + inQuotes(variable.name) + ": " + failure.what());
    return std::nullopt;
  }
}

Json jsonOf(const VariableReport& variable, const std::optional<std::string>& expanded) {
  return Json()
      .with("name", variable.name)
      .with("value", variable.value)
      .with("expanded", expanded ? Json(*expanded) : Json())
      .with("origin", wordFor(variable.origin));
}

}  // namespace

ExitCode expandText(const Request& request, Output& output) {
  openVariables(request);
  if (!request.trace) {
    output.line(expandReferences(*request.text));
    return ExitCode::kDone;
  }
  std::vector<LTLib::ExpansionStep> steps;
  const auto showSteps = [&] {
    for (const LTLib::ExpansionStep& step : steps) {
      output.line(escapeControls(step.name) + '\t' + escapeControls(step.replacement) + '\t' +
                  escapeControls(step.text));
    }
  };
  try {
    const std::string expanded = expandReferences(*request.text, steps);
    showSteps();
    output.line(expanded);
  } catch (const Failure&) {
    showSteps();
    output.finish();
    throw;
  }
  return ExitCode::kDone;
}

ExitCode showVariables(const Request& request, Output& output) {
  openVariables(request);
  Json all = Json::array();
  for (const VariableReport& variable : LTLib::reportVariables()) {
    const std::optional<std::string> expanded = expandedValue(variable);
    if (request.json) {
      all.push(jsonOf(variable, expanded));
    } else {
      output.line(escapeControls(variable.name) + '\t' + escapeControls(variable.value) + '\t' +
                  escapeControls(expanded.value_or("")) + '\t' + wordFor(variable.origin));
    }
  }
  if (request.json) {
    output.line(all.text());
  }
  return ExitCode::kDone;
}

}  // namespace ltreg
