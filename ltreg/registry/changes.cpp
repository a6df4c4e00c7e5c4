#include "ltreg/registry/changes.h"

#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/key_walk.h"
#include "ltreg/registry/value_form.h"

namespace ltreg {
namespace {

void demandForm(const std::string& whyNot) {
  if (!whyNot.empty()) {
    throw Failure(ExitCode::kBadInput, whyNot);
  }
}

// The enumerators have room for fewer bytes than this, and end at a name that does not fit.
constexpr std::size_t kLongName = 200;

void warnOfLongName(const std::string& name) {
  if (name.size() >= kLongName) {
    complain("warning: the name " + inQuotes(name) + " has " + std::to_string(name.size()) +
             " bytes; programs that go through its key stop there, and miss what is behind it");
  }
}

// The checks ahead of this say in words what has no form in a store file; the library tries each form
// out, and its word is last.
void putBytes(Session& session, const std::string& path, const std::string& name,
              const Value& wanted, const std::string& bytes) {
  const std::optional<Value> present = session.value(path, name);
  if (present && sameValue(*present, wanted)) {
    return;
  }
  if (session.onFiles() && present && present->type != wanted.type) {
    throw Failure(ExitCode::kBadInput, "the value " + inQuotes(name) + " is a " +
                                           typeWord(*present) +
                                           " and would stay one; delete it first");
  }
  const int result = session.setValue(path, name, wanted.type, bytes);
  if (session.onFiles() && result != kDone) {
    throw Failure(ExitCode::kBadInput,
                  "the value " + inQuotes(name) + " of the key " + inQuotes(path) +
                      " has no form in a store file from which it would come back as it is");
  }
  demandDone(result, "setting the value " + inQuotes(name));
}

}  // namespace

void demandPlace(const Session& session, const std::string& path, const std::string& name) {
  if (session.onFiles()) {
    demandForm(whyNoKeyForm(path));
    demandForm(whyNoNameForm(name));
  }
  warnOfLongName(std::string(lastComponent(path)));
  warnOfLongName(name);
}

std::string whyNoForm(const std::string& path, const NamedValue& value) {
  const Value& data = value.value;
  if (!isTypeOfFiles(data.type)) {
    return "the value " + inQuotes(value.name) + " is of the type " + typeWord(data) +
           ", of which a store file holds none";
  }
  const bool isList = data.type == REG_MULTI_SZ;
  std::string why = whyNoKeyForm(path);
  if (why.empty()) {
    why = whyNoNameForm(value.name);
  }
  if (why.empty() && data.type != REG_DWORD) {
    why = whyNoValueForm(data.type, isList ? itemsOf(data) : std::vector<std::string>{data.data});
  }
  return why;
}

void putValue(Session& session, const std::string& path, const std::string& name,
              const ValueType& type, const std::vector<std::string>& words) {
  const std::string bytes = bytesToSet(type, words);
  if (session.onFiles()) {
    demandForm(whyNoValueForm(type.type,
                              type.type == REG_BINARY ? std::vector<std::string>{bytes} : words));
  }
  putBytes(session, path, name, asRead(type.type, bytes, session.onFiles()), bytes);
}

void putCopy(Session& session, const std::string& path, const NamedValue& value) {
  demandPlace(session, path, value.name);
  putBytes(session, path, value.name, value.value, bytesOf(value.value));
}

void eraseValue(Session& session, const std::string& path, const std::string& name) {
  demandDone(session.deleteValue(path, name), "deleting the value " + inQuotes(name));
  // A store may hold further values of that name, which would come to light now.
  while (session.onFiles() && session.deleteValue(path, name) == kDone) {
  }
}

void deleteBranch(Session& session, const KeyArgument& key) {
  std::vector<std::string> doomed;
  walkKeys(session, key.path, [&](const std::string& path) { doomed.push_back(path); });
  for (auto path = doomed.rbegin(); path != doomed.rend(); ++path) {
    demandDone(session.deleteKey(*path), "deleting the key " + inQuotes(fullName(key.root, *path)));
  }
}

}  // namespace ltreg
