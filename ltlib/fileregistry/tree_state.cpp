#include "ltlib/fileregistry/tree_state.h"

#include <array>
#include <cstddef>

#include "ltlib/foundation/do_once.h"

namespace LTLib::detail {
namespace {

struct TreeState {
  Mutex lock;
  std::array<QSCfgRoot, 5> roots;
};

struct StoreState {
  Mutex lock;
  std::map<std::string, std::string> names;
};

ltDoOnce_t s_treeOnce;
TreeState* s_tree = nullptr;
ltDoOnce_t s_storeOnce;
StoreState* s_store = nullptr;

// The order in which the root sections are made.
constexpr std::array<enumRegRoot, 5> kOrder = {REG_ROOT_CURRENT_USER, REG_ROOT_USERS,
                                               REG_ROOT_CLASSES_ROOT, REG_ROOT_CURRENT_CONFIG,
                                               REG_ROOT_LOCAL_MACHINE};

void makeTree() {
  auto state = std::make_unique<TreeState>();
  for (std::size_t i = 0; i < kOrder.size(); ++i) {
    state->roots[i].root = kOrder[i];
  }
  s_tree = state.release();
}

void makeStore() {
  s_store = new StoreState;
}

TreeState& tree() {
  ltDoOnce(s_treeOnce, makeTree);
  return *s_tree;
}

StoreState& store() {
  ltDoOnce(s_storeOnce, makeStore);
  return *s_store;
}

}  // namespace

bool isRootHandle(const void* handle) {
  for (const enumRegRoot root : kOrder) {
    if (handle == predefinedRootHandle(root)) {
      return true;
    }
  }
  return false;
}

QSCfgRoot& cfgRootOf(const void* rootHandle) {
  std::array<QSCfgRoot, 5>& roots = tree().roots;
  for (QSCfgRoot& candidate : roots) {
    if (predefinedRootHandle(candidate.root) == rootHandle) {
      return candidate;
    }
  }
  return roots.back();
}

void makeRootSections() {
  for (QSCfgRoot& candidate : tree().roots) {
    if (candidate.section == nullptr) {
      candidate.section = std::make_unique<QSCfgDataSection>(registryRootName(candidate.root));
      candidate.lineCount = 0;
    }
  }
}

Mutex& treeLock() {
  return tree().lock;
}

Mutex& storeLock() {
  return store().lock;
}

std::map<std::string, std::string>& lockNames() {
  return store().names;
}

}  // namespace LTLib::detail
