// From the cheapest look to the dearest: the entry, the file, and only then a process that loads it.
#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

#include "ltlib/platform/tool_process.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/component/component_check.h"
#include "ltreg/component/component_entry.h"
#include "ltreg/component/component_verdict.h"

namespace ltreg {
namespace {

namespace fs = std::filesystem;
using LTLib::Platform::ChildEnd;
using LTLib::Platform::ChildOutcome;

constexpr char kAnew[] = "'ltreg component register CLASS FILE' enters it";

// What is wrong with the entry alone.
std::optional<Verdict> verdictOnEntry(const std::optional<Value>& entry) {
  if (!entry) {
    return Verdict{ExitCode::kAbsent, std::string("not registered; ") + kAnew};
  }
  if (entry->type != REG_SZ) {
    return faulty("its entry is a " + typeWord(*entry) + ", and the loader reads strings alone; " +
                  kAnew + " anew");
  }
  if (entry->data.empty()) {
    return faulty(std::string("its entry names no file; ") + kAnew + " anew");
  }
  return std::nullopt;
}

Verdict noFile(const std::string& library) {
  const bool hasPercent = library.find('%') != std::string::npos;
  return {ExitCode::kAbsent,
          "there is no file " + inQuotes(library) +
              (hasPercent ? "; references in it are not expanded, so that it needs the full path"
                          : "; put the library there, or register the class with its present"
                            " place")};
}

// What is wrong with the file as its first bytes tell, which say more than the system's loader.
std::optional<Verdict> verdictOnFile(const std::string& library, const std::string& program) {
  const fs::path path = fileOf(library);
  if (!path.has_parent_path()) {
    return std::nullopt;  // the system looks for it in places of its own
  }
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) {
    return noFile(library);
  }
  const std::string file = inQuotes(library);
  if (!fs::is_regular_file(status)) {
    return faulty(file + " is no file but a folder or a device; register the library's own file");
  }
  const LTLib::LibraryHeader header = LTLib::readLibraryHeader(library);
  const LTLib::LibraryHeader own = LTLib::readLibraryHeader(program);
  if (header.format == LTLib::LibraryFormat::kUnreadable) {
    return faulty(file + " cannot be read; see to its permissions");
  }
  if (header.format == LTLib::LibraryFormat::kOther) {
    return faulty(file + " is no library; register the library's own file");
  }
  if (!header.sameProcessor(own)) {
    return faulty(file + " is a file of " + header.text() + ", and this system loads " +
                  own.text() + "; build the library for it");
  }
  if (!header.isLibrary) {
    return faulty(file + " is a program or an object file; register the library's own file");
  }
  return std::nullopt;
}

const char* whileIn(Stage stage) {
  switch (stage) {
    case Stage::kLoading:
      return " while it loads; look at its static objects";
    case Stage::kCreating:
      return " while an object is made and released; look at the class";
    default:
      return " when the process ends; look at the destructors of its static objects";
  }
}

// What the end of the child means, for which the library is to blame from the loading on.
Verdict verdictOnEnd(const std::string& library, const Told& told, const ChildOutcome& outcome,
                     int seconds) {
  const std::string file = inQuotes(library);
  switch (outcome.end) {
    case ChildEnd::kCrashed:
      return faulty(file + " crashes with " + outcome.reason + whileIn(told.stage));
    case ChildEnd::kTimedOut:
      return faulty(file + " hangs for " + std::to_string(seconds) + " s" + whileIn(told.stage) +
                    ", or give more time with --timeout");
    default:
      return told.verdict ? *told.verdict
                          : faulty(file + " ends the process with exit code " +
                                   std::to_string(outcome.code) + whileIn(told.stage));
  }
}

[[noreturn]] void throwNotTried(const ChildOutcome& outcome) {
  std::string why = "; the child's own message tells why";
  if (outcome.end == ChildEnd::kNotStarted) {
    why = ", since the system starts no child process: " + outcome.reason;
  } else if (outcome.end == ChildEnd::kTimedOut) {
    why = "; its time was up before that, perhaps in waiting for the store's lock";
  } else if (outcome.end == ChildEnd::kCrashed) {
    why = "; the child ended before that with " + outcome.reason;
  }
  throw Failure(ExitCode::kStoreFailed, "the library was not tried" + why);
}

// A library can do anything to the process that loads it, so that this one is left out of it.
Verdict verdictByTrial(const Request& request, const std::string& id, const std::string& library,
                       const std::string& program) {
  std::vector<std::string> words{"component", "probe", "--timeout",
                                 std::to_string(request.timeout)};
  if (request.create) {
    words.emplace_back("--create");
  }
  if (request.store) {
    words.insert(words.end(), {"--store", *request.store});
  }
  if (request.backend) {
    words.insert(words.end(), {"--backend", *request.backend});
  }
  words.insert(words.end(), {"--", id});
  const ChildOutcome outcome =
      LTLib::Platform::runChild(program, words, std::chrono::seconds(request.timeout));
  const Told told = readTold(outcome.output);
  if (told.stage == Stage::kStarting) {
    throwNotTried(outcome);
  }
  return verdictOnEnd(library, told, outcome, request.timeout);
}

}  // namespace

Verdict verdictOn(const Request& request, const std::string& id,
                  const std::optional<Value>& entry) {
  if (std::optional<Verdict> verdict = verdictOnEntry(entry)) {
    return std::move(*verdict);
  }
  const std::string program = LTLib::Platform::programPath();
  if (std::optional<Verdict> verdict = verdictOnFile(entry->data, program)) {
    return std::move(*verdict);
  }
  return verdictByTrial(request, id, entry->data, program);
}

ExitCode checkClass(const Request& request, Output& output) {
  const std::string& id = *request.clsid;
  KeyArgument key = classKey(id);
  std::optional<Value> entry;
  std::string hint;
  {
    Session session(request, key, Access::kRead);
    entry = session.value(key.path, kLibraryValue);
    if (!entry) {
      hint = didYouMean(id, session.subKeys(std::string(parentPath(key.path))));
    }
  }
  Verdict verdict = verdictOn(request, id, entry);
  verdict.text += hint;
  if (request.json) {
    output.json(versionedJson("class", id)
                    .with("library", entry ? jsonOf(*entry) : Json())
                    .with("form", jsonOf(verdict.form))
                    .with("healthy", verdict.code == ExitCode::kDone)
                    .with("verdict", verdict.text));
  } else {
    output.line(escapeControls(id) + ": " + verdict.text);
  }
  return verdict.code;
}

}  // namespace ltreg
