#include <filesystem>
#include <system_error>

#include "ltreg/cli/json.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/component/component_entry.h"
#include "ltreg/registry/changes.h"

namespace ltreg {
namespace {

// The loader hands the text to the system as it is, so that a relative one would depend on the
// folder of each process.
std::string libraryToEnter(const Request& request) {
  if (request.file->empty()) {
    throw Failure(ExitCode::kBadInput, "FILE is empty; give the file of the library");
  }
  if (request.asIs) {
    return *request.file;
  }
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(fileOf(*request.file), error);
  if (error) {
    throw Failure(ExitCode::kBadInput, "the file " + inQuotes(*request.file) +
                                           " cannot be made absolute: " + error.message());
  }
  std::string file = textOf(absolute);
  if (!std::filesystem::exists(absolute, error)) {
    complain("warning: there is no file " + inQuotes(file) + " yet");
  }
  return file;
}

bool isEmptyKey(Session& session, const std::string& path) {
  return session.values(path).empty() && session.subKeys(path).empty();
}

}  // namespace

ExitCode registerClass(const Request& request, Output& /*output*/) {
  KeyArgument key = classKey(*request.clsid);
  if (request.clsid->find('\\') != std::string::npos) {
    throw Failure(ExitCode::kBadInput, "the identifier " + inQuotes(*request.clsid) +
                                           " holds a backslash, which parts keys; leave it out");
  }
  const std::string library = libraryToEnter(request);
  Session session(request, key, Access::kWrite);
  demandPlace(session, key.path, kLibraryValue);
  // A value keeps its type in a store file, and the loader reads strings alone.
  const std::optional<Value> present = session.value(key.path, kLibraryValue);
  if (present && present->type != REG_SZ) {
    eraseValue(session, key.path, kLibraryValue);
  }
  putValue(session, key.path, kLibraryValue, {REG_SZ}, {library});
  session.save();
  return ExitCode::kDone;
}

ExitCode unregisterClass(const Request& request, Output& /*output*/) {
  KeyArgument key = classKey(*request.clsid);
  Session session(request, key, Access::kWrite);
  if (!session.value(key.path, kLibraryValue)) {
    session.throwAbsent("an entry of the class " + inQuotes(*request.clsid));
  }
  eraseValue(session, key.path, kLibraryValue);
  // What else somebody keeps in the key stays.
  if (session.keyExists(key.path) && isEmptyKey(session, key.path)) {
    demandDone(session.deleteKey(key.path), "deleting the key " + inQuotes(key.path));
  }
  session.save();
  return ExitCode::kDone;
}

ExitCode listClasses(const Request& request, Output& output) {
  KeyArgument key = classesKey();
  Session session(request, key, Access::kRead);
  Json all = Json::array();
  for (const ClassEntry& entry : classesBelow(session, key.path)) {
    if (request.json) {
      all.push(Json().with("class", entry.id).with("library", entry.library));
    } else {
      output.line(escapeControls(entry.id) + '\t' + escapeControls(entry.library));
    }
  }
  if (request.json) {
    output.line(all.text());
  }
  return ExitCode::kDone;
}

}  // namespace ltreg
