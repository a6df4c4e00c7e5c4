#include "tests/support/store_fixture.h"

#include <future>

#include "ltlib/fileregistry/store/store.h"
#include "ltlib/fileregistry/store/store_lock.h"
#include "tests/support/text_tree.h"

namespace LTLib::Testing {
namespace {

constexpr enumRegRoot kRoots[] = {REG_ROOT_CURRENT_USER, REG_ROOT_CURRENT_CONFIG, REG_ROOT_USERS,
                                  REG_ROOT_CLASSES_ROOT, REG_ROOT_LOCAL_MACHINE};

}  // namespace

void forgetStores() {
  const ScopedLock hold(detail::treeLock());
  for (const enumRegRoot root : kRoots) {
    QSCfgRoot fresh;
    fresh.root = root;
    detail::cfgRootOf(predefinedRootHandle(root)) = std::move(fresh);
  }
  detail::lockNames().clear();
}

std::string showRoot(enumRegRoot root) {
  const QSCfgRoot& record = detail::cfgRootOf(predefinedRootHandle(root));
  return record.section != nullptr ? showTree(*record.section) : "<no tree>";
}

OpenKey::OpenKey(const std::string& path, enumRegRoot root) {
  EXPECT_EQ(
      m_manager.regOpenKeyEx(predefinedRootHandle(root), path.c_str(), 0, KEY_READ, &m_handle), 0);
}

OpenKey::~OpenKey() {
  EXPECT_EQ(m_manager.regCloseKey(m_handle), 0);
}

int OpenKey::set(const char* name, const std::string& bytes, unsigned int type) {
  return m_manager.regSetValueEx(m_handle, name, type,
                                 reinterpret_cast<const unsigned char*>(bytes.data()),
                                 static_cast<unsigned int>(bytes.size()));
}

int OpenKey::setNumber(const char* name, std::uint32_t number) {
  return set(name, {reinterpret_cast<const char*>(&number), sizeof number}, REG_DWORD);
}

std::string OpenKey::text(const char* name) {
  std::string ownName = name != nullptr ? name : "";
  std::string data;
  unsigned int size = 0;
  const auto query = [&](unsigned char* bytes) {
    unsigned int type = 0;
    return m_manager.regQueryValueEx(m_handle, name != nullptr ? ownName.data() : nullptr, &type,
                                     bytes, &size);
  };
  if (query(nullptr) != 0) {
    return "<-1>";
  }
  data.resize(size + 1);
  return query(reinterpret_cast<unsigned char*>(data.data())) == 0 ? data.substr(0, size) : "<-1>";
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
  detail::cfgEnsureLoaded({predefinedRootHandle(root), "A\\B"});
  return detail::cfgRootOf(predefinedRootHandle(root)).loaded;
}

// A lock that stayed held would keep the other thread out for ever; the test's time limit ends it.
bool StoreTest::locksAreFree() const {
  return std::async(std::launch::async,
                    [&] {
                      const ScopedLock tree(detail::treeLock());
                      const Platform::FileCalls failing =
                          std::exchange(Platform::fileCalls(), m_calls);
                      const detail::StoreHold hold(store());
                      Platform::fileCalls() = failing;
                      return true;
                    })
      .get();
}

}  // namespace LTLib::Testing
