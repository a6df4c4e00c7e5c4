#include "ltreg/cli/failure.h"

#include <cstdio>
#include <system_error>

#include "ltlib/platform/terminal.h"
#include "ltreg/cli/json.h"
#include "ltreg/cli/progress.h"

namespace ltreg {

const char* kindOf(ExitCode code) {
  constexpr const char* kKinds[] = {"done",  "absent",    "usage",   "input",
                                    "store", "component", "conflict"};
  return kKinds[static_cast<int>(code)];
}

std::string describeFailure(int result) {
  return "error " + std::to_string(result) +
         (result > 0 ? ", " + std::system_category().message(result) : std::string());
}

void demandDone(int result, const std::string& what) {
  if (result != 0) {
    throw Failure(ExitCode::kStoreFailed,
                  what + " was refused by the registry with " + describeFailure(result));
  }
}

// In one piece, so that the lines of tools that run side by side do not mix.
void complain(const std::string& message) {
  Progress::hide();
  LTLib::Platform::writeText(stderr, "ltreg: " + message + '\n');
  // Some systems hold it back where it leads to no terminal, and a notice of a wait is for now.
  std::fflush(stderr);
}

void complainInJson(const Failure& failure) {
  const FilePlace& place = failure.place();
  Json error = Json()
                   .with("code", static_cast<std::uint64_t>(failure.code()))
                   .with("kind", kindOf(failure.code()))
                   .with("message", failure.what())
                   .with("file", place.file.empty() ? Json() : Json(place.file))
                   .with("line", place.line == 0 ? Json() : Json(std::uint64_t{place.line}));
  LTLib::Platform::writeText(stderr, versionedJson("error", std::move(error)).line() + '\n');
}

}  // namespace ltreg
