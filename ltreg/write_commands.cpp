#include <string>

#include "ltreg/commands.h"
#include "ltreg/key_argument.h"
#include "ltreg/key_walk.h"
#include "ltreg/session.h"
#include "ltreg/shown_text.h"
#include "ltreg/value.h"
#include "ltreg/value_form.h"

namespace ltreg {
namespace {

void demandForm(const std::string& whyNot) {
  if (!whyNot.empty()) {
    throw Failure(ExitCode::kBadInput, whyNot);
  }
}

// The operating system's registry gives its own numbers; the file backend knows one alone.
void demandDone(int result, const std::string& what) {
  if (result != 0) {
    throw Failure(ExitCode::kStoreFailed,
                  what + " was refused by the registry with error " + std::to_string(result));
  }
}

// Of a value in a store file the type stays, whatever type a later call names.
unsigned int typeToSet(const Session& session, const Request& request,
                       const std::optional<Value>& present) {
  const unsigned int otherwise = present ? present->type : REG_SZ;
  const unsigned int type = request.type ? typeOfWord(*request.type) : otherwise;
  if (session.onFiles() && present && present->type != type) {
    throw Failure(ExitCode::kBadInput,
                  "the value " + inQuotes(*request.name) + " is a " + typeWord(present->type) +
                      " and would stay one; delete it first, or leave --type out");
  }
  return type;
}

void deleteOneValue(Session& session, const KeyArgument& key, const std::string& name) {
  if (!session.value(key.path, name)) {
    session.throwAbsent("the value " + inQuotes(name) + " of " +
                        inQuotes(fullName(key.root, key.path)));
  }
  demandDone(session.deleteValue(key.path, name), "deleting the value " + inQuotes(name));
  // A store may hold further values of that name, which would come to light now.
  while (session.deleteValue(key.path, name) == 0) {
  }
}

void deleteWholeKey(Session& session, const KeyArgument& key, bool recursive) {
  const std::string name = fullName(key.root, key.path);
  if (!session.keyExists(key.path)) {
    session.throwAbsent("the key " + inQuotes(name));
  }
  if (!recursive && !session.subKeys(key.path).empty()) {
    throw Failure(ExitCode::kBadInput,
                  "the key " + inQuotes(name) + " has sub-keys; --recursive deletes them, too");
  }
  std::vector<std::string> doomed;
  walkKeys(session, key.path, [&](const std::string& path) { doomed.push_back(path); });
  for (auto path = doomed.rbegin(); path != doomed.rend(); ++path) {
    demandDone(session.deleteKey(*path), "deleting the key " + inQuotes(fullName(key.root, *path)));
  }
}

}  // namespace

ExitCode setValue(const Request& request, Output& /*output*/) {
  const KeyArgument key = parseKey(*request.key);
  Session session(request, key.root, Access::kWrite);
  if (session.onFiles()) {
    demandForm(whyNoKeyForm(key.path));
    demandForm(whyNoNameForm(*request.name));
  }
  const unsigned int type = typeToSet(session, request, session.value(key.path, *request.name));
  const std::string bytes = bytesToSet(type, request.values);
  if (session.onFiles()) {
    demandForm(whyNoValueForm(type, request.values));
  }
  const int result = session.setValue(key.path, *request.name, type, bytes);
  if (session.onFiles() && result != 0) {
    throw Failure(ExitCode::kBadInput,
                  "the key, name or value has no form in a store file from"
                  " which it would come back as it is");
  }
  demandDone(result, "setting the value " + inQuotes(*request.name));
  session.save();
  return ExitCode::kDone;
}

ExitCode deleteEntry(const Request& request, Output& /*output*/) {
  const KeyArgument key = parseKey(*request.key);
  if (request.name && request.recursive) {
    throw Failure(ExitCode::kUsage,
                  "--recursive deletes keys; leave it out, or leave the value's NAME out");
  }
  if (!request.name && key.path.empty()) {
    throw Failure(ExitCode::kBadInput, "a root cannot be deleted; delete the keys below it");
  }
  Session session(request, key.root, Access::kWrite);
  if (request.name) {
    deleteOneValue(session, key, *request.name);
  } else {
    deleteWholeKey(session, key, request.recursive);
  }
  session.save();
  return ExitCode::kDone;
}

}  // namespace ltreg
