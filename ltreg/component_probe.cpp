#include <cstdio>
#include <exception>
#include <memory>

#include "ltreg/commands.h"
#include "ltreg/component_entry.h"
#include "ltreg/component_verdict.h"
#include "ltreg/shown_text.h"

namespace ltreg {
namespace {

std::string inHexadecimal(QSResult result) {
  char text[11];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned int>(result));
  return text;
}

Verdict faulty(const std::string& text) {
  return {ExitCode::kBadInput, text};
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
    return {ExitCode::kDone, "healthy; " + file + " loads and offers the class"};
  }
  const std::string offered = classesOffered(classes);
  return faulty(file + " loads, but has no registrar for the class; " +
                (offered.empty() ? "it offers none of the registered classes"
                                 : "of the registered classes it offers " + offered));
}

// The loader reads the class's entry itself, and the store may have failed since it was checked.
Verdict loadAndReport(const std::string& id, const std::vector<ClassEntry>& classes) {
  try {
    return loadVerdict(id, classes);
  } catch (const QSException& failure) {
    return {ExitCode::kStoreFailed, std::string("the loader fails: ") + failure.What()};
  }
}

// What iqs_CoCreateInstance does, step by step, so that each can be told from the others.
Verdict createVerdict(iqsDllLoader::CreateUnknown factory) {
  const char* step = "the factory";
  try {
    iqsCUnknown* object = nullptr;
    if (const QSResult made = factory(nullptr, &object); made < 0) {
      return faulty("the factory fails with " + inHexadecimal(made));
    }
    if (object == nullptr) {
      return faulty("the factory reports success and gives no object");
    }
    step = "Init";
    const QSResult ready = object->Init();
    step = "InnerQueryInterface";
    void* face = nullptr;
    const QSResult found =
        ready >= 0 ? object->InnerQueryInterface(LTLib::kUnknownID, &face) : ready;
    step = "the release of the object";
    object->InnerRelease();
    if (ready < 0) {
      return faulty("Init fails with " + inHexadecimal(ready));
    }
    if (found < 0) {
      return faulty("the object gives no public face, but " + inHexadecimal(found));
    }
    static_cast<iqsUnknown*>(face)->Release();
  } catch (const QSException& failure) {
    return faulty(std::string(step) + " throws: " + failure.What());
  } catch (const std::exception& failure) {
    return faulty(std::string(step) + " throws: " + failure.what());
  } catch (...) {
    return faulty(std::string(step) + " throws what is no std::exception");
  }
  return {};
}

}  // namespace

ExitCode probeClass(const Request& request, Output& output) {
  const std::string& id = *request.clsid;
  const std::vector<ClassEntry> classes = registeredClasses(request);
  tell(output, Stage::kLoading);
  Verdict verdict = loadAndReport(id, classes);
  if (request.create && verdict.code == ExitCode::kDone) {
    tell(output, Stage::kCreating);
    const Verdict created = createVerdict(iqsDllLoader::iqsGetCreateInstance(id.c_str(), nullptr));
    verdict = created.code == ExitCode::kDone
                  ? Verdict{created.code, verdict.text + ", and an object was made and released"}
                  : created;
  }
  tell(output, verdict);
  return ExitCode::kDone;
}

}  // namespace ltreg
