#include "ltreg/commands/file_differences.h"

#include <chrono>
#include <sstream>

#include "ltlib/platform/tool_process.h"
#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

using LTLib::Platform::ChildEnd;

// The other process waits for the locks of two folders, perhaps; nobody looks at it meanwhile.
constexpr std::chrono::hours kLimit{24};

}  // namespace

std::vector<std::string> differencesBetween(const std::string& before, const std::string& after,
                                            enumRegRoot root) {
  const LTLib::Platform::ChildOutcome outcome = LTLib::Platform::runChild(
      LTLib::Platform::programPath(), {"diff", "--", before, after}, kLimit);
  const bool told =
      outcome.end == ChildEnd::kExited && (outcome.code == static_cast<long>(ExitCode::kDone) ||
                                           outcome.code == static_cast<long>(ExitCode::kAbsent));
  if (!told) {
    throw Failure(ExitCode::kStoreFailed,
                  "the difference between " + inQuotes(before) + " and " + inQuotes(after) +
                      " cannot be had" + (outcome.reason.empty() ? "" : ": ") + outcome.reason);
  }
  // Files alone have no root of their own, and are shown below this one.
  const std::string shownRoot = LTLib::registryRootName(REG_ROOT_LOCAL_MACHINE);
  std::vector<std::string> lines;
  std::istringstream rest(outcome.output);
  for (std::string line; std::getline(rest, line);) {
    if (rest.eof()) {
      complain("warning: there is more; 'ltreg diff' shows all");
    } else {
      lines.push_back(line.replace(2, shownRoot.size(), LTLib::registryRootName(root)));
    }
  }
  return lines;
}

}  // namespace ltreg
