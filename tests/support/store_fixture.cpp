#include "tests/support/store_fixture.h"

#include <future>

#include "ltlib/fileregistry/store/store.h"
#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/fileregistry/tree/tree_lock.h"
#include "tests/support/text_tree.h"

namespace LTLib::Testing {
namespace {

constexpr enumRegRoot kRoots[] = {REG_ROOT_CURRENT_USER, REG_ROOT_CURRENT_CONFIG, REG_ROOT_USERS,
                                  REG_ROOT_CLASSES_ROOT, REG_ROOT_LOCAL_MACHINE};

}  // namespace

void forgetStores() {
  const detail::TreeWriting writing;
  for (const enumRegRoot root : kRoots) {
    QSCfgRoot fresh;
    fresh.root = root;
    detail::cfgRootOf(predefinedRootHandle(root)) = std::move(fresh);
  }
  detail::lockNames().clear();
}

std::string showRoot(enumRegRoot root) {
  const QSCfgRoot& record = detail::cfgRootOf(predefinedRootHandle(root));
  return record.tree != nullptr ? showTree(*record.tree) : "<no tree>";
}

StoreTest::StoreTest() : m_calls(Platform::fileCalls()) {
  forgetStores();
}

StoreTest::~StoreTest() {
  Platform::fileCalls() = m_calls;
  forgetStores();
}

std::string StoreTest::store(enumRegRoot root) const {
  return m_folder.path(detail::defaultFileName(root));
}

void StoreTest::restartWith(const std::string& text) {
  forgetStores();
  m_folder.write(detail::defaultFileName(kMachine), text);
}

bool StoreTest::load(enumRegRoot root) {
  detail::cfgEnsureLoaded(*QSFileKeyHandle::make(predefinedRootHandle(root), "A\\B"));
  return detail::cfgRootOf(predefinedRootHandle(root)).loaded;
}

// A lock that stayed held would keep the other thread out for ever; the test's time limit ends it.
bool StoreTest::locksAreFree() const {
  return std::async(std::launch::async,
                    [&] {
                      const detail::TreeWriting writing;
                      const Platform::FileCalls failing =
                          std::exchange(Platform::fileCalls(), m_calls);
                      const detail::StoreHold hold(store());
                      Platform::fileCalls() = failing;
                      return true;
                    })
      .get();
}

}  // namespace LTLib::Testing
