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

Json jsonOf(const std::string& text, const std::string& expanded,
            const std::vector<LTLib::ExpansionStep>* steps) {
  Json json = versionedJson("text", text).with("expanded", expanded);
  if (steps == nullptr) {
    return json;
  }
  Json all = Json::array();
  for (const LTLib::ExpansionStep& step : *steps) {
    all.push(Json()
                 .with("name", step.name)
                 .with("replacement", step.replacement)
                 .with("text", step.text));
  }
  return std::move(json).with("steps", std::move(all));
}

void showSteps(const std::vector<LTLib::ExpansionStep>& steps, Output& output) {
  for (const LTLib::ExpansionStep& step : steps) {
    output.line(escapeControls(step.name) + '\t' + escapeControls(step.replacement) + '\t' +
                escapeControls(step.text));
  }
}

}  // namespace

ExitCode expandText(const Request& request, Output& output) {
  openVariables(request);
  std::vector<LTLib::ExpansionStep> steps;
  try {
    const std::string expanded =
        request.trace ? expandReferences(*request.text, steps) : expandReferences(*request.text);
    if (request.json) {
      output.json(jsonOf(*request.text, expanded, request.trace ? &steps : nullptr));
      return ExitCode::kDone;
    }
    showSteps(steps, output);
    output.line(expanded);
  } catch (const Failure&) {
    showSteps(steps, output);
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
      output.row(escapeControls(variable.name) + '\t' + escapeControls(variable.value) + '\t' +
                     escapeControls(expanded.value_or("")) + '\t' + wordFor(variable.origin),
                 3);
    }
  }
  if (request.json) {
    output.json(versionedJson("variables", std::move(all)));
  }
  return ExitCode::kDone;
}

}  // namespace ltreg
