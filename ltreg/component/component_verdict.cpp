#include "ltreg/component/component_verdict.h"

#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

constexpr std::string_view kLoading = "loading";
constexpr std::string_view kCreating = "creating";
constexpr std::string_view kVerdict =
    "verdict ";  // and digits of exit code and form, a blank, the text

void tellLine(Output& output, std::string_view line) {
  output.line(line);
  output.finish();
}

std::optional<Verdict> readVerdict(std::string_view line) {
  line.remove_prefix(kVerdict.size());
  if (line.size() < 3 || line[0] < '0' || line[0] > '6' || line[1] < '0' || line[1] > '2' ||
      line[2] != ' ') {
    return std::nullopt;
  }
  return Verdict{static_cast<ExitCode>(line[0] - '0'), std::string(line.substr(3)),
                 static_cast<ClassForm>(line[1] - '0')};
}

// A library that was loaded, or one that it needs, as the system names it.
std::string nameOf(const std::string& culprit, const std::string& library) {
  const std::string file = inQuotes(library);
  const bool isItself = culprit == library || culprit.ends_with('/' + library);
  return isItself ? file : inQuotes(culprit) + ", which " + file + " needs,";
}

}  // namespace

const char* wordFor(ClassForm form) {
  return form == ClassForm::kPlain ? "plain" : form == ClassForm::kComponent ? "component" : "";
}

Json jsonOf(ClassForm form) {
  return form == ClassForm::kUnknown ? Json() : Json(wordFor(form));
}

void tell(Output& output, Stage stage) {
  tellLine(output, stage == Stage::kLoading ? kLoading : kCreating);
}

void tell(Output& output, const Verdict& verdict) {
  std::string line(kVerdict);
  line += static_cast<char>('0' + static_cast<int>(verdict.code));
  line += static_cast<char>('0' + static_cast<int>(verdict.form));
  tellLine(output, line + ' ' + escapeControls(verdict.text));
}

Told readTold(std::string_view lines) {
  Told told;
  while (!lines.empty()) {
    const std::size_t end = lines.find('\n');
    std::string_view line = lines.substr(0, end);
    lines.remove_prefix(end == std::string_view::npos ? lines.size() : end + 1);
    line.remove_suffix(line.ends_with('\r') ? 1 : 0);
    if (line == kLoading) {
      told.stage = Stage::kLoading;
    } else if (line == kCreating) {
      told.stage = Stage::kCreating;
    } else if (line.starts_with(kVerdict)) {
      told.verdict = readVerdict(line);
      told.stage = Stage::kEnding;
    }
  }
  return told;
}

// The loaders of ELF systems name what they miss; where one words it otherwise its text stands.
Verdict verdictOnLoad(const std::string& library, const std::string& reason) {
  constexpr std::string_view kNoFile = ": cannot open shared object file";
  constexpr std::string_view kNoSymbol = ": undefined symbol: ";
  const std::string file = inQuotes(library);
  if (const std::size_t at = reason.find(kNoSymbol); at != std::string::npos) {
    return {ExitCode::kComponentFailed,
            nameOf(reason.substr(0, at), library) + " needs the symbol " +
                inQuotes(reason.substr(at + kNoSymbol.size())) +
                ", which nothing defines; link it with the library that does, in the version that"
                " does"};
  }
  if (const std::size_t at = reason.find(kNoFile); at != std::string::npos) {
    const std::string missing = reason.substr(0, at);
    if (missing == library) {
      return {ExitCode::kAbsent, "the system finds no library " + file +
                                     "; put it where it looks, or register its full path"};
    }
    return {ExitCode::kComponentFailed,
            file + " needs the library " + inQuotes(missing) +
                ", which the system does not find; install it, or put it where it looks"};
  }
  return {ExitCode::kComponentFailed,
          file + " does not load: " + (reason.empty() ? "the system gives no reason" : reason)};
}

}  // namespace ltreg
