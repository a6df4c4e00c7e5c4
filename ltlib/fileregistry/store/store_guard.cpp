#include "ltlib/fileregistry/store/store_guard.h"

#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/fileregistry/tree/tree_lock.h"

namespace LTLib {

// All three are re-entrant; the tree's lock comes first, as in every operation on the tree.
struct StoreGuard::Holds {
  explicit Holds(const std::string& pathname) : store(detail::locateStore(pathname)) {}

  detail::TreeWriting tree;
  detail::StoreHold store;
};

StoreGuard::StoreGuard(const std::string& pathname) : m_holds(std::make_unique<Holds>(pathname)) {}

StoreGuard::~StoreGuard() = default;

}  // namespace LTLib
