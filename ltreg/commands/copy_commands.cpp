// Keys and values under another name. All is read before anything is changed, so that a key can be
// copied into itself, and what a copy cannot hold is known before anything is saved.
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/changes_shown.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/read_key.h"
#include "ltreg/registry/absent.h"
#include "ltreg/registry/branch.h"
#include "ltreg/registry/changes.h"

namespace ltreg {
namespace {

void putBranch(Session& session, const std::string& top, const Branch& branch) {
  for (const KeyContent& content : branch) {
    const std::string path = joinPaths(top, content.below);
    session.makeKey(path);
    for (const NamedValue& value : content.values) {
      putCopy(session, path, value);
    }
  }
}

void demandFree(Session& session, const KeyArgument& key) {
  if (session.keyExists(key.path)) {
    throw Failure(ExitCode::kBadInput, "there is a key " + inQuotes(fullName(key.root, key.path)) +
                                           " already; delete it, or give another name");
  }
}

void renameKey(Session& session, const KeyArgument& key, const std::string& name) {
  if (key.path.empty()) {
    throw Failure(ExitCode::kBadInput, "a root cannot be renamed");
  }
  if (name.empty() || name.find('\\') != std::string::npos) {
    throw Failure(ExitCode::kBadInput,
                  inQuotes(name) +
                      " is no name of a key; give its new last component, or copy it"
                      " to another place");
  }
  const KeyArgument renamed{key.root, joinPaths(std::string(parentPath(key.path)), name)};
  // Names that differ in their letters' case alone are one name, which can be had again only once
  // it has gone.
  const bool isFree = !sameName(renamed.path, key.path);
  if (isFree) {
    demandFree(session, renamed);
  }
  const Branch branch = readBranch(session, key.path);
  if (isFree) {
    putBranch(session, renamed.path, branch);
  }
  deleteBranch(session, key);
  if (!isFree) {
    putBranch(session, renamed.path, branch);
  }
}

void renameValue(Session& session, const KeyArgument& key, const std::string& name,
                 const std::string& renamed) {
  const std::optional<Value> value = session.value(key.path, name);
  if (!value) {
    throwAbsentValue(session, key, name);
  }
  const bool isFree = !sameName(name, renamed);
  if (isFree && session.value(key.path, renamed)) {
    throw Failure(ExitCode::kBadInput,
                  "there is a value " + inQuotes(renamed) + " already; delete it first");
  }
  if (isFree) {
    putCopy(session, key.path, {renamed, *value});
  }
  eraseValue(session, key.path, name);
  if (!isFree) {
    putCopy(session, key.path, {renamed, *value});
  }
}

}  // namespace

ExitCode copyKey(const Request& request, Output& output) {
  Branch branch;
  {
    // Closed before the other root is opened: whoever waits for one store holds no other.
    ReadKey from(request);
    branch = readBranch(from.session(), from.path());
  }
  KeyArgument to = parseKey(*request.target);
  Session session(request, to, Access::kWrite);
  demandFree(session, to);
  putBranch(session, to.path, branch);
  return conclude(request, output, session, to.root);
}

ExitCode renameEntry(const Request& request, Output& output) {
  if (request.values.empty() || request.values.size() > 2) {
    throw Failure(ExitCode::kUsage,
                  "rename takes a key and its new name, or a key, a value and the"
                  " value's new name");
  }
  KeyArgument key = parseKey(*request.key);
  Session session(request, key, Access::kWrite);
  if (!session.keyExists(key.path)) {
    throwAbsentKey(session, key);
  }
  if (request.values.size() == 1) {
    renameKey(session, key, request.values[0]);
  } else {
    renameValue(session, key, request.values[0], request.values[1]);
  }
  return conclude(request, output, session, key.root);
}

}  // namespace ltreg
