// The six handles of the system lie side by side, so that a subtraction finds the root of each.
#include "ltlib/fileregistry/tree/roots.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>

#include "ltlib/fileregistry/tree/tree_lock.h"
#include "ltlib/foundation/do_once.h"
#include "ltlib/foundation/process_mutex.h"

QSFileKeyHandle::QSFileKeyHandle(void* root, std::string_view path)
    : m_root(root), m_pathSize(path.size()) {
  std::copy(path.begin(), path.end(), reinterpret_cast<char*>(this + 1));
}

void QSFileKeyHandle::dropTrailingBackslash() {
  if (path().ends_with('\\')) {
    --m_pathSize;
    m_section = nullptr;
  }
}

namespace LTLib::detail {
namespace {

// Made by ltDoOnce and left to the end of the process: static objects with destructors would go
// before the last callers do.
struct TreeState {
  ProcessMutex lock{ProcessLock::kTree};
  std::array<QSCfgRoot, 5> roots;
};

ltDoOnce_t s_treeOnce;
constinit std::atomic<TreeState*> s_tree{
    nullptr};  // spares every operation the way through ltDoOnce

// The order in which the root sections are made.
constexpr std::array<enumRegRoot, 5> kOrder = {REG_ROOT_CURRENT_USER, REG_ROOT_USERS,
                                               REG_ROOT_CLASSES_ROOT, REG_ROOT_CURRENT_CONFIG,
                                               REG_ROOT_LOCAL_MACHINE};

// Where the root of each of the system's six handles stands in that order; one is no root of ours.
constexpr std::array<std::size_t, 6> kPlaces = {2, 0, 4, 1, 4, 3};
constexpr std::uint64_t kNoRoot = 4;

void makeTree() {
  auto state = std::make_unique<TreeState>();
  for (std::size_t i = 0; i < kOrder.size(); ++i) {
    state->roots[i].root = kOrder[i];
  }
  s_tree.store(state.release(), std::memory_order_release);
}

TreeState& tree() {
  TreeState* tree = s_tree.load(std::memory_order_acquire);
  if (tree == nullptr) {
    ltDoOnce(s_treeOnce, makeTree);
    tree = s_tree.load(std::memory_order_acquire);
  }
  return *tree;
}

}  // namespace

bool isRootHandle(const void* handle) {
  const std::uintptr_t place = placeOfPredefined(handle);
  return place < kPlaces.size() && place != kNoRoot;
}

QSCfgRoot& cfgRootOf(const void* rootHandle) {
  const std::uintptr_t place = placeOfPredefined(rootHandle);
  std::array<QSCfgRoot, 5>& roots = tree().roots;
  // The machine's root stands last, and for every handle that is none.
  return place < kPlaces.size() ? roots[kPlaces[place]] : roots.back();
}

void makeTrees() {
  for (QSCfgRoot& candidate : tree().roots) {
    if (candidate.tree == nullptr) {
      candidate.tree = std::make_unique<QSCfgTree>(registryRootName(candidate.root));
      candidate.lineCount = 0;
    }
  }
}

Mutex& treeLock() {
  return tree().lock;
}

}  // namespace LTLib::detail
