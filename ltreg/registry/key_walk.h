// Going through a key and all below it.
#ifndef LTREG_REGISTRY_KEY_WALK_H
#define LTREG_REGISTRY_KEY_WALK_H

#include <string>
#include <utility>
#include <vector>

#include "ltreg/cli/progress.h"
#include "ltreg/registry/session.h"

namespace ltreg {

/// Calls `visit(path)` for a key and everything below it, a parent ahead of its children, children
/// in their order. Does not recurse, since a store is as deep as its file says.
template <class Visit>
void walkKeys(Session& session, const std::string& top, Visit visit) {
  Progress progress("keys");
  std::vector<std::string> pending{top};
  while (!pending.empty()) {
    const std::string path = std::move(pending.back());
    pending.pop_back();
    visit(path);
    progress.step();
    const std::vector<std::string> children = session.subKeys(path);
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
      pending.push_back(path.empty() ? *child : path + '\\' + *child);
    }
  }
}

}  // namespace ltreg

#endif  // LTREG_REGISTRY_KEY_WALK_H
