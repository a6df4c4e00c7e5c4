#include "ltreg/registry/changes.h"

#include "ltreg/cli/shown_text.h"
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

}  // namespace

void demandPlace(const Session& session, const std::string& path, const std::string& name) {
  if (session.onFiles()) {
    demandForm(whyNoKeyForm(path));
    demandForm(whyNoNameForm(name));
  }
  warnOfLongName(std::string(lastComponent(path)));
  warnOfLongName(name);
}

void putValue(Session& session, const std::string& path, const std::string& name,
              const ValueType& type, const std::vector<std::string>& words) {
  const std::string bytes = bytesToSet(type, words);
  if (session.onFiles()) {
    demandForm(whyNoValueForm(type.type, words));
  }
  const std::optional<Value> present = session.value(path, name);
  const Value wanted = asRead(type.type, bytes, session.onFiles());
  if (present && present->type == wanted.type && present->data == wanted.data) {
    return;
  }
  const int result = session.setValue(path, name, type.type, bytes);
  // The checks above say in words what is wrong; the library tries each form out, and its word is last.
  if (session.onFiles() && result != kDone) {
    throw Failure(ExitCode::kBadInput,
                  "the key, name or value has no form in a store file from"
                  " which it would come back as it is");
  }
  demandDone(result, "setting the value " + inQuotes(name));
}

void eraseValue(Session& session, const std::string& path, const std::string& name) {
  demandDone(session.deleteValue(path, name), "deleting the value " + inQuotes(name));
  // A store may hold further values of that name, which would come to light now.
  while (session.onFiles() && session.deleteValue(path, name) == kDone) {
  }
}

}  // namespace ltreg
