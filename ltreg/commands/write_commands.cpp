#include <string>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/changes_shown.h"
#include "ltreg/commands/commands.h"
#include "ltreg/registry/absent.h"
#include "ltreg/registry/changes.h"
#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/session.h"
#include "ltreg/registry/value.h"

namespace ltreg {
namespace {

// Of a value in a store file the type stays, whatever type a later call names.
ValueType typeToSet(const Session& session, const Request& request,
                    const std::optional<Value>& present) {
  const ValueType otherwise = present ? ValueType(*present) : ValueType{REG_SZ};
  ValueType type = request.type ? typeOfWord(*request.type).value_or(otherwise) : otherwise;
  if (type.type == REG_BINARY) {
    type.inHex = !request.asText;
  }
  if (session.onFiles() && !isTypeOfFiles(type.type)) {
    throw Failure(ExitCode::kBadInput, "a store file holds no values of the type " +
                                           inQuotes(*request.type) +
                                           ", but string, ulong, binary and list");
  }
  return type;
}

void deleteOneValue(Session& session, const KeyArgument& key, const std::string& name) {
  if (!session.value(key.path, name)) {
    throwAbsentValue(session, key, name);
  }
  eraseValue(session, key.path, name);
}

// References may come to nothing, so that a path is known to lead below the root only now.
void deleteWholeKey(Session& session, const KeyArgument& key, bool recursive) {
  if (key.path.empty()) {
    throw Failure(ExitCode::kBadInput, "a root cannot be deleted; delete the keys below it");
  }
  if (!session.keyExists(key.path)) {
    throwAbsentKey(session, key);
  }
  if (!recursive && !session.subKeys(key.path).empty()) {
    throw Failure(ExitCode::kBadInput, "the key " + inQuotes(fullName(key.root, key.path)) +
                                           " has sub-keys; --recursive deletes them, too");
  }
  deleteBranch(session, key);
}

}  // namespace

ExitCode setValue(const Request& request, Output& output) {
  KeyArgument key = parseKey(*request.key);
  Session session(request, key, Access::kWrite);
  demandPlace(session, key.path, *request.name);
  const ValueType type = typeToSet(session, request, session.value(key.path, *request.name));
  putValue(session, key.path, *request.name, type, request.values);
  return conclude(request, output, session, key.root);
}

ExitCode deleteEntry(const Request& request, Output& output) {
  KeyArgument key = parseKey(*request.key);
  if (request.name && request.recursive) {
    throw Failure(ExitCode::kUsage,
                  "--recursive deletes keys; leave it out, or leave the value's NAME out");
  }
  Session session(request, key, Access::kWrite);
  if (request.name) {
    deleteOneValue(session, key, *request.name);
  } else {
    deleteWholeKey(session, key, request.recursive);
  }
  return conclude(request, output, session, key.root);
}

}  // namespace ltreg
