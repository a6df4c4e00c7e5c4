#include <cstdio>
#include <exception>
#include <string_view>

#include "ltlib/platform/tool_process.h"
#include "ltreg/cli/arguments.h"
#include "ltreg/cli/failure.h"
#include "ltreg/cli/output.h"
#include "ltreg/cli/screen.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/verbs.h"
#include "ltreg/registry/backend.h"

namespace ltreg {
namespace {

bool asksForJson(int count, const char* const* words) {
  for (int i = 1; i < count && std::string_view(words[i]) != "--"; ++i) {
    if (std::string_view(words[i]) == "--json") {
      return true;
    }
  }
  return false;
}

ExitCode run(int count, const char* const* words, std::FILE* data) {
  const Invocation asked = parseArguments(count, words, allVerbs());
  const Screen screen(asked.request, data);
  Output output(screen.stream(), screen.look());
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

ExitCode report(const Failure& failure, bool inJson) {
  if (inJson) {
    complainInJson(failure);
  } else {
    complain(failure.what());
  }
  return failure.code();
}

ExitCode runAndReport(int count, const char* const* words, std::FILE* data) {
  const bool inJson = asksForJson(count, words);
  try {
    return run(count, words, data);
  } catch (const Failure& failure) {
    return report(failure, inJson);
  } catch (const std::exception& failure) {
    return report({ExitCode::kStoreFailed, escapeControls(failure.what())}, inJson);
  }
}

}  // namespace
}  // namespace ltreg

// The library prints messages about a store's syntax while it loads; they must not mix with data.
int main(int count, char** words) {
  std::FILE* data = LTLib::Platform::divertStandardOutput();
  return static_cast<int>(ltreg::runAndReport(count, words, data));
}
