#include <algorithm>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/registry/backend.h"
#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/store_access.h"
#include "ltreg/registry/store_messages.h"

namespace ltreg {
namespace {

constexpr enumRegRoot kAllRoots[] = {REG_ROOT_CURRENT_USER, REG_ROOT_CURRENT_CONFIG, REG_ROOT_USERS,
                                     REG_ROOT_CLASSES_ROOT, REG_ROOT_LOCAL_MACHINE};

std::string countOf(std::size_t count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

// Writes the report of one store file: its warnings, and a line that sums up.
ExitCode checkStore(const std::string& pathname, Output& output) {
  const LTLib::StoreReport report = checkedStore(pathname);
  for (const LTLib::StoreFault& warning : report.warnings) {
    output.line(placeOf(pathname, warning));
  }
  if (const std::string left = whatIsLeft(pathname, report); !left.empty()) {
    output.line(left);
  }
  if (!report.loads()) {
    complain(whyNotLoaded(pathname, report));
    output.line(escapeControls(pathname) + ": does not load");
    return ExitCode::kStoreFailed;
  }
  output.line(escapeControls(pathname) + ": " +
              (report.exists ? "loads, " + countOf(report.lineCount, "line") + ", " +
                                   countOf(report.valueCount, "value") + ", " +
                                   countOf(report.warningCount, "warning")
                             : std::string("does not exist")));
  return report.exists ? ExitCode::kDone : ExitCode::kAbsent;
}

}  // namespace

ExitCode checkStores(const Request& request, Output& output) {
  const enumRegRoot root = request.key ? parseRoot(*request.key) : REG_ROOT_NONE;
  const Backend backend(request, root != REG_ROOT_NONE ? root : REG_ROOT_LOCAL_MACHINE);
  if (!backend.onFiles()) {
    output.line("there is no store to check: the roots lie in the operating system's registry");
    return request.key ? ExitCode::kAbsent : ExitCode::kDone;
  }
  if (request.store) {
    return checkStore(*request.store, output);
  }
  if (root != REG_ROOT_NONE) {
    return checkStore(backend.storeOf(root), output);
  }
  // That a root has no store file yet is nothing wrong.
  ExitCode worst = ExitCode::kDone;
  for (const enumRegRoot each : kAllRoots) {
    const std::string pathname = backend.manager().GetConfigurationPathname(each);
    if (!pathname.empty() && checkStore(pathname, output) == ExitCode::kStoreFailed) {
      worst = ExitCode::kStoreFailed;
    }
  }
  return worst;
}

}  // namespace ltreg
