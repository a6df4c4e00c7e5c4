#include "ltreg/registry/absent.h"

#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

// What stands in the place of the first component that is not there.
std::string nearestKey(Session& session, const KeyArgument& key) {
  const std::string& path = key.path;
  for (std::size_t end = path.find('\\');; end = path.find('\\', end + 1)) {
    const std::string upTo = path.substr(0, end);
    if (!session.keyExists(upTo)) {
      const std::string parent(parentPath(upTo));
      return session.keyExists(parent) ? didYouMean(lastComponent(upTo), session.subKeys(parent),
                                                    fullName(key.root, parent) + '\\')
                                       : std::string();
    }
    if (end == std::string::npos) {
      return {};
    }
  }
}

}  // namespace

void throwAbsentKey(Session& session, const KeyArgument& key) {
  session.throwAbsent("the key " + inQuotes(fullName(key.root, key.path)),
                      nearestKey(session, key));
}

void throwAbsentValue(Session& session, const KeyArgument& key, const std::string& name) {
  if (!session.keyExists(key.path)) {
    throwAbsentKey(session, key);
  }
  session.throwAbsent(
      "the value " + inQuotes(name) + " of " + inQuotes(fullName(key.root, key.path)),
      didYouMean(name, session.valueNames(key.path)));
}

}  // namespace ltreg
