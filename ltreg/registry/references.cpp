#include "ltreg/registry/references.h"

#include <algorithm>
#include <optional>

#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/backend.h"
#include "ltreg/registry/store_access.h"
#include "ltreg/registry/store_messages.h"

namespace ltreg {
namespace {

constexpr std::size_t kMostText = std::size_t{256} << 20;  // where an expansion gives up

std::optional<std::string> valueOf(const std::string& name) {
  for (LTLib::VariableReport& variable : LTLib::reportVariables()) {
    if (variable.name == name) {
      return std::move(variable.value);
    }
  }
  return std::nullopt;
}

// Expansion gives one code for every failure, so that the reason is found from where it stopped.
// What is wrong with the leftmost reference, at which an expansion ended.
std::string whyNotExpanded(const std::string& text) {
  const std::size_t start = std::min(text.find('%'), text.size());
  const std::size_t end = text.find('%', start + 1);
  if (end == std::string::npos) {
    return "a percent sign has no partner; write references as %NAME%, there is no other use of"
           " percent signs";
  }
  const std::string name = text.substr(start + 1, end - start - 1);
  const std::string reference = inQuotes('%' + name + '%');
  const std::optional<std::string> value = valueOf(name);
  if (!value) {
    return "the variable " + inQuotes(name) +
           " is not defined; 'ltreg vars' shows those that are, and letter case counts";
  }
  if (text.size() - name.size() - 2 + value->size() > kMostText) {
    return "the text grows past 256 MiB at the reference " + reference +
           "; correct the values that refer to one another";
  }
  return "the reference " + reference +
         " leads back to itself, or takes more than 10,000,000 replacements; correct the value "
         "of " +
         inQuotes(name) + " or of those that it refers to";
}

template <class Expand>
std::string expandWith(const std::string& text, Expand expand) {
  std::string expanded = text;
  try {
    if (expand(expanded) >= 0) {
      return expanded;
    }
  } catch (const QSException& failure) {
    throw Failure(ExitCode::kStoreFailed,
                  "the public variables, which lie in HKEY_LOCAL_MACHINE,"
                  " cannot be read: " +
                      escapeControls(failure.What()));
  }
  throw Failure(ExitCode::kBadInput, inQuotes(text) +
                                         " does not expand: " + whyNotExpanded(expanded) +
                                         "; the text so far: " + inQuotes(expanded));
}

}  // namespace

void demandPublicVariables() {
  const Backend backend(Request(), REG_ROOT_LOCAL_MACHINE);
  const std::string pathname = backend.manager().GetConfigurationPathname(REG_ROOT_LOCAL_MACHINE);
  // A root without a store has no public variables, which is no failure.
  if (!backend.onFiles() || pathname.empty()) {
    return;
  }
  const LTLib::StoreReport report = checkedStore(pathname);
  if (!report.loads()) {
    throw Failure(ExitCode::kStoreFailed,
                  "the public variables cannot be read: " + whyNotLoaded(pathname, report));
  }
}

void loadVariables() {
  // The first expansion reads config.dat and the public variables, whatever its text is.
  (void)expandReferences("");
}

std::string expandReferences(const std::string& text) {
  return expandWith(text, QSExpandString);
}

std::string expandReferences(const std::string& text, std::vector<LTLib::ExpansionStep>& steps) {
  return expandWith(text, [&](std::string& expanded) {
    const QSResult result = LTLib::traceExpansion(expanded, steps);
    if (!steps.empty() && steps.back().text != expanded) {
      complain("warning: the trace ends ahead of the expansion: it would take more than 16 MiB");
    }
    return result;
  });
}

}  // namespace ltreg
