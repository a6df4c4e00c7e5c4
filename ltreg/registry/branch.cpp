#include "ltreg/registry/branch.h"

#include "ltreg/registry/key_walk.h"

namespace ltreg {

Branch readBranch(Session& session, const std::string& top) {
  Branch branch;
  walkKeys(session, top, [&](const std::string& path) {
    branch.push_back({pathBelow(path, top), session.values(path)});
  });
  // Half of a key under another name would pass for the whole of it.
  if (!session.sawAll()) {
    throw Failure(ExitCode::kStoreFailed, "what cannot be read in full is not copied");
  }
  return branch;
}

std::string joinPaths(const std::string& path, const std::string& below) {
  return path.empty() || below.empty() ? path + below : path + '\\' + below;
}

}  // namespace ltreg
