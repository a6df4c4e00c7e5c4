// What the tool tells of itself from its own table.
#include "ltreg/cli/manual.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/verbs.h"

namespace ltreg {

ExitCode showManual(const Request& /*request*/, Output& output) {
  output.bytes(manualPage(allVerbs()));
  return ExitCode::kDone;
}

}  // namespace ltreg
