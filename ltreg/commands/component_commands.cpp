#include <algorithm>
#include <filesystem>
#include <system_error>

#include "ltreg/cli/json.h"
#include "ltreg/cli/progress.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/component/component_check.h"
#include "ltreg/component/component_entry.h"
#include "ltreg/component/library_classes.h"
#include "ltreg/registry/changes.h"

namespace ltreg {
namespace {

// The loader hands the text to the system as it is, so that a relative one would depend on the
// folder of each process.
std::string libraryToEnter(const Request& request, const std::string& library) {
  if (library.empty()) {
    throw Failure(ExitCode::kBadInput, "FILE is empty; give the file of the library");
  }
  if (request.asIs) {
    return library;
  }
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(fileOf(library), error);
  if (error) {
    throw Failure(ExitCode::kBadInput,
                  "the file " + inQuotes(library) + " cannot be made absolute: " + error.message());
  }
  std::string file = textOf(absolute);
  if (!std::filesystem::exists(absolute, error)) {
    complain("warning: there is no file " + inQuotes(file) + " yet");
  }
  return file;
}

// References in an identifier are replaced, as the loader has it. Requires: the variables are loaded.
std::string pathOfClass(const std::string& id) {
  if (id.find('\\') != std::string::npos) {
    throw Failure(ExitCode::kBadInput, "the identifier " + inQuotes(id) +
                                           " holds a backslash, which parts keys; leave it out");
  }
  return expandPath(classKey(id).path);
}

void enterClass(Session& session, const std::string& path, const std::string& library) {
  demandPlace(session, path, kLibraryValue);
  // A value keeps its type in a store file, and the loader reads strings alone.
  const std::optional<Value> present = session.value(path, kLibraryValue);
  if (present && present->type != REG_SZ) {
    eraseValue(session, path, kLibraryValue);
  }
  putValue(session, path, kLibraryValue, {REG_SZ}, {library});
}

// What else somebody keeps in the key stays.
void eraseClass(Session& session, const std::string& path) {
  eraseValue(session, path, kLibraryValue);
  if (session.keyExists(path) && session.values(path).empty() && session.subKeys(path).empty()) {
    demandDone(session.deleteKey(path), "deleting the key " + inQuotes(path));
  }
}

// Of entries in the registry, or of what a library offers.
template <class Class>
std::vector<std::string> idsOf(const std::vector<Class>& classes) {
  std::vector<std::string> ids(classes.size());
  std::transform(classes.begin(), classes.end(), ids.begin(),
                 [](const Class& each) { return each.id; });
  return ids;
}

void showClass(const ClassEntry& entry, Output& output) {
  output.row(escapeControls(entry.id) + '\t' + onOneLine(entry.value), 1);
}

// What a look at the entry tells.
std::string faultOf(const Value& entry) {
  return entry.type != REG_SZ   ? "it is a " + typeWord(entry) + ", no string"
         : entry.data.empty()   ? "it names no file"
         : isLibraryGone(entry) ? "there is no such file"
                                : std::string();
}

// Its text is empty where nothing is wrong.
Verdict verdictForList(const Request& request, const ClassEntry& entry) {
  if (!request.load) {
    return {ExitCode::kDone, faultOf(entry.value)};
  }
  Verdict verdict = verdictOn(request, entry.id, entry.value);
  if (verdict.code == ExitCode::kDone) {
    verdict.text.clear();
  }
  return verdict;
}

Json jsonOf(const ClassEntry& entry, const Verdict& verdict) {
  return Json()
      .with("class", entry.id)
      .with("library", ltreg::jsonOf(entry.value))
      .with("form", ltreg::jsonOf(verdict.form))
      .with("fault", verdict.text.empty() ? Json() : Json(verdict.text));
}

void showClass(const ClassEntry& entry, const Verdict& verdict, bool withForm, Output& output) {
  output.row(escapeControls(entry.id) + '\t' + onOneLine(entry.value) +
                 (withForm ? std::string("\t") + wordFor(verdict.form) : "") +
                 (verdict.text.empty() ? "" : '\t' + verdict.text),
             withForm ? 3 : 2);
}

}  // namespace

ExitCode registerClass(const Request& request, Output& output) {
  if (request.library.has_value() == request.clsid.has_value() ||
      request.clsid.has_value() != request.file.has_value()) {
    throw Failure(ExitCode::kUsage,
                  "register takes CLASS and FILE, or --all LIBRARY in their place");
  }
  const std::vector<std::string> classes =
      request.library ? idsOf(classesOf(*request.library)) : std::vector{*request.clsid};
  const std::string library =
      libraryToEnter(request, request.library ? *request.library : *request.file);
  KeyArgument key = classesKey();
  Session session(request, key, Access::kWrite);
  for (const std::string& id : classes) {
    enterClass(session, pathOfClass(id), library);
  }
  session.save();
  if (request.library) {
    for (const std::string& id : classes) {
      showClass({id, {{REG_SZ}, library}}, output);
    }
  }
  return ExitCode::kDone;
}

ExitCode unregisterClass(const Request& request, Output& output) {
  if (request.missing == request.clsid.has_value()) {
    throw Failure(ExitCode::kUsage, "unregister takes CLASS, or --missing in its place");
  }
  KeyArgument key = classesKey();
  Session session(request, key, Access::kWrite);
  std::vector<ClassEntry> doomed = classesBelow(session, key.path);
  const std::vector<std::string> all = idsOf(doomed);
  const std::string path = request.missing ? "" : pathOfClass(*request.clsid);
  std::erase_if(doomed, [&](const ClassEntry& entry) {
    return request.missing ? !isLibraryGone(entry.value) : !sameName(entry.id, lastComponent(path));
  });
  if (!request.missing && doomed.empty()) {
    session.throwAbsent("an entry of the class " + inQuotes(*request.clsid),
                        didYouMean(*request.clsid, all));
  }
  for (const ClassEntry& entry : doomed) {
    eraseClass(session, key.path + '\\' + entry.id);
  }
  session.save();
  if (request.missing) {
    for (const ClassEntry& entry : doomed) {
      showClass(entry, output);
    }
  }
  return ExitCode::kDone;
}

ExitCode showOffers(const Request& request, Output& output) {
  Json all = Json::array();
  for (const LTLib::ComponentOffer& offer : classesOf(*request.library)) {
    if (request.json) {
      all.push(Json()
                   .with("class", offer.id)
                   .with("interfaces", offer.interfaces)
                   .with("words", offer.words));
    } else {
      output.row(escapeControls(offer.id) + '\t' + escapeControls(interfacesOf(offer)) + '\t' +
                     escapeControls(offer.words),
                 2);
    }
  }
  if (request.json) {
    output.json(versionedJson("offers", std::move(all)));
  }
  return ExitCode::kDone;
}

ExitCode listClasses(const Request& request, Output& output) {
  KeyArgument key = classesKey();
  std::vector<ClassEntry> classes;
  {
    Session session(request, key, Access::kRead);
    classes = classesBelow(session, key.path);
  }
  Progress progress("classes");
  Json all = Json::array();
  for (const ClassEntry& entry : classes) {
    const Verdict verdict = verdictForList(request, entry);
    if (request.json) {
      all.push(jsonOf(entry, verdict));
    } else {
      showClass(entry, verdict, request.load, output);
    }
    progress.step();
  }
  if (request.json) {
    output.json(versionedJson("classes", std::move(all)));
  }
  return ExitCode::kDone;
}

}  // namespace ltreg
