// What a process that tries a class out tells the one that started it, over standard output.
#ifndef LTREG_COMPONENT_COMPONENT_VERDICT_H
#define LTREG_COMPONENT_COMPONENT_VERDICT_H

#include <optional>
#include <string>
#include <string_view>

#include "ltreg/cli/failure.h"
#include "ltreg/cli/json.h"
#include "ltreg/cli/output.h"

namespace ltreg {

/// What kind of objects a class makes, which its library alone tells.
enum class ClassForm { kUnknown, kPlain, kComponent };

/// Its word, in JSON null where it is unknown.
[[nodiscard]] const char* wordFor(ClassForm form);
[[nodiscard]] Json jsonOf(ClassForm form);

/// What is wrong and what to do, or that nothing is, in one line.
struct Verdict {
  ExitCode code = ExitCode::kDone;
  std::string text;
  ClassForm form = ClassForm::kUnknown;
};

[[nodiscard]] inline Verdict faulty(const std::string& text) {
  return {ExitCode::kComponentFailed, text};
}

/// How far a process got.
enum class Stage { kStarting, kLoading, kCreating, kEnding };

/// These hand a line on at once, since the process may end at any moment. Throw Failure if that
/// fails.
void tell(Output& output, Stage stage);
void tell(Output& output, const Verdict& verdict);

struct Told {
  Stage stage = Stage::kStarting;
  std::optional<Verdict> verdict;
};

/// Reads what was told, as far as it makes sense.
[[nodiscard]] Told readTold(std::string_view lines);

/// What the system said of a library that does not load. `library` is the text that it was asked
/// to load.
[[nodiscard]] Verdict verdictOnLoad(const std::string& library, const std::string& reason);

}  // namespace ltreg

#endif  // LTREG_COMPONENT_COMPONENT_VERDICT_H
