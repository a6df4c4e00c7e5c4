#include <cstdio>
#include <exception>

#include "ltlib/platform/tool_process.h"
#include "ltreg/cli/arguments.h"
#include "ltreg/cli/failure.h"
#include "ltreg/cli/output.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/verbs.h"
#include "ltreg/registry/backend.h"

namespace ltreg {
namespace {

ExitCode run(int count, const char* const* words, std::FILE* data) {
  const Invocation asked = parseArguments(count, words, allVerbs());
  Output output(data);
  ExitCode code = ExitCode::kDone;
  if (asked.command != nullptr) {
    chooseBackend(asked.request);
    output.endLinesWith(asked.request.null ? '\0' : '\n');
    code = asked.command(asked.request, output);
  } else {
    output.line(asked.text);
  }
  output.finish();
  return code;
}

ExitCode runAndReport(int count, const char* const* words, std::FILE* data) {
  try {
    return run(count, words, data);
  } catch (const Failure& failure) {
    complain(failure.what());
    return failure.code();
  } catch (const std::exception& failure) {
    complain(escapeControls(failure.what()));
    return ExitCode::kStoreFailed;
  }
}

}  // namespace
}  // namespace ltreg

// The library prints messages about a store's syntax while it loads; they must not mix with data.
int main(int count, char** words) {
  std::FILE* data = LTLib::Platform::divertStandardOutput();
  return static_cast<int>(ltreg::runAndReport(count, words, data));
}
