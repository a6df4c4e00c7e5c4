#include "ltreg/changes.h"

#include "ltreg/shown_text.h"
#include "ltreg/value_form.h"

namespace ltreg {
namespace {

void demandForm(const std::string& whyNot) {
  if (!whyNot.empty()) {
    throw Failure(ExitCode::kBadInput, whyNot);
  }
}

}  // namespace

// The operating system's registry gives its own numbers; the file backend knows one alone.
void demandDone(int result, const std::string& what) {
  if (result != 0) {
    throw Failure(ExitCode::kStoreFailed,
                  what + " was refused by the registry with error " + std::to_string(result));
  }
}

void demandPlace(const Session& session, const std::string& path, const std::string& name) {
  if (session.onFiles()) {
    demandForm(whyNoKeyForm(path));
    demandForm(whyNoNameForm(name));
  }
}

void putValue(Session& session, const std::string& path, const std::string& name, unsigned int type,
              const std::vector<std::string>& words) {
  const std::string bytes = bytesToSet(type, words);
  if (session.onFiles()) {
    demandForm(whyNoValueForm(type, words));
  }
  const int result = session.setValue(path, name, type, bytes);
  if (session.onFiles() && result != 0) {
    throw Failure(ExitCode::kBadInput,
                  "the key, name or value has no form in a store file from"
                  " which it would come back as it is");
  }
  demandDone(result, "setting the value " + inQuotes(name));
}

void eraseValue(Session& session, const std::string& path, const std::string& name) {
  demandDone(session.deleteValue(path, name), "deleting the value " + inQuotes(name));
  // A store may hold further values of that name, which would come to light now.
  while (session.deleteValue(path, name) == 0) {
  }
}

}  // namespace ltreg
