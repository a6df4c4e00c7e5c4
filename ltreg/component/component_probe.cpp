// This side of the check runs whatever the library does, and tells how far it came ahead of each step: what
// came last before the end of the process is to blame.
#include <chrono>
#include <exception>
#include <memory>

#include "ltlib/platform/tool_process.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/component/component_check.h"
#include "ltreg/component/component_entry.h"
#include "ltreg/component/component_verdict.h"

namespace ltreg {
namespace {

using LTLib::CreationStep;

// What was thrown, as it stands behind "throws". Requires: an exception is being handled.
std::string currentException() {
  try {
    throw;
  } catch (const std::exception& failure) {
    return std::string(": ") + failure.what();
  } catch (...) {
    return " what is no std::exception";
  }
}

// The process that started this one has told of the store's warnings.
std::vector<ClassEntry> registeredClasses(Request request) {
  request.quiet = true;
  KeyArgument key = classesKey();
  Session session(request, key, Access::kRead);
  return classesBelow(session, key.path);
}

// Nothing else was loaded in this process, so that every factory is the library's.
std::string classesOffered(const std::vector<ClassEntry>& classes) {
  std::string offered;
  for (const ClassEntry& entry : classes) {
    const std::optional<LTLib::ClassReport> report = LTLib::reportClass(entry.id.c_str());
    if (report && report->hasFactory) {
      offered.append(offered.empty() ? "" : ", ").append(inQuotes(entry.id));
    }
  }
  return offered;
}

Verdict loadVerdict(const std::string& id, const std::vector<ClassEntry>& classes) {
  char* text = nullptr;
  const bool loaded = iqsDllLoader::Load(id.c_str(), &text) != nullptr;
  const std::unique_ptr<char[]> owner(text);
  const std::optional<LTLib::ClassReport> report = LTLib::reportClass(id.c_str());
  if (!report) {
    return {ExitCode::kAbsent,
            "the loader finds no entry in the registry of this machine; is '--store' a store that"
            " programs do not read?"};
  }
  if (!loaded) {
    return verdictOnLoad(report->library, report->loadFailure);
  }
  const std::string file = inQuotes(report->library);
  if (report->hasFactory) {
    const ClassForm form = report->isPlain ? ClassForm::kPlain : ClassForm::kComponent;
    return {ExitCode::kDone,
            "healthy; " + file + " loads and offers the class as a " +
                (report->isPlain ? "plain one" : "component"),
            form};
  }
  const std::string offered = classesOffered(classes);
  return faulty(file + " loads, but has no registrar for the class; " +
                (offered.empty() ? "it offers none of the registered classes"
                                 : "of the registered classes it offers " + offered));
}

// The loader reads the class's entry itself, and the store may have failed since it was checked. Once
// the entry is known it is the library that throws.
Verdict loadAndReport(const std::string& id, const std::vector<ClassEntry>& classes) {
  try {
    return loadVerdict(id, classes);
  } catch (...) {
    const std::optional<LTLib::ClassReport> report = LTLib::reportClass(id.c_str());
    return report ? faulty(inQuotes(report->library) + " throws while it loads" +
                           currentException() + "; look at its static objects")
                  : Verdict{ExitCode::kStoreFailed, "the loader fails" + currentException()};
  }
}

std::string nameOf(CreationStep step) {
  switch (step) {
    case CreationStep::kLoad:
      return "the loader";
    case CreationStep::kFactory:
    case CreationStep::kObject:
      return "the factory";
    case CreationStep::kInit:
      return "Init";
    case CreationStep::kFace:
      return "InnerQueryInterface";
    default:
      return "the release of the object";
  }
}

// What a creation says that gave no object.
Verdict verdictOnFailure(CreationStep step, QSResult result, const std::string& error) {
  if (step == CreationStep::kLoad) {
    return faulty("the class is of the plain form, and '--create' makes components alone");
  }
  if (step == CreationStep::kObject) {
    return faulty("the factory reports success and gives no object");
  }
  return faulty(nameOf(step) +
                (error.empty() ? " fails with " + inHexadecimal(result) : " throws: " + error));
}

// Requires: the class is loaded and has a factory.
Verdict createVerdict(const std::string& id) {
  CreationStep step{};
  try {
    void* face = nullptr;
    std::string error;
    const QSResult result = LTLib::createInstance(nullptr, id.c_str(), &face, error, step);
    if (result < 0) {
      return verdictOnFailure(step, result, error);
    }
    static_cast<iqsUnknown*>(face)->Release();
  } catch (...) {
    return faulty(nameOf(step) + " throws" + currentException());
  }
  return {};
}

}  // namespace

// The process that waits for this one ends it a little earlier and tells of it; if it still can.
ExitCode probeClass(const Request& request, Output& output) {
  LTLib::Platform::limitLifetime(std::chrono::seconds(request.timeout + 1));
  const std::string& id = *request.clsid;
  const std::vector<ClassEntry> classes = registeredClasses(request);
  tell(output, Stage::kLoading);
  Verdict verdict = loadAndReport(id, classes);
  if (request.create && verdict.code == ExitCode::kDone) {
    tell(output, Stage::kCreating);
    const Verdict created = createVerdict(id);
    verdict.code = created.code;
    verdict.text = created.code == ExitCode::kDone
                       ? verdict.text + ", and an object was made and released"
                       : created.text;
  }
  tell(output, verdict);
  return ExitCode::kDone;
}

}  // namespace ltreg
