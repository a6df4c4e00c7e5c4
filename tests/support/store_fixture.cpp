#include "tests/support/store_fixture.h"

#include <future>

#include "ltlib/fileregistry/kFileRegistry.h"
#include "ltlib/fileregistry/store_files.h"
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

OpenKey::OpenKey(QSRegistryManager& manager, enumRegRoot root, const char* path)
    : m_manager(manager) {
  EXPECT_EQ(manager.regOpenKeyEx(predefinedRootHandle(root), path, 0, KEY_READ, &m_handle), 0);
}

OpenKey::~OpenKey() {
  EXPECT_EQ(m_manager.regCloseKey(m_handle), 0);
}

int OpenKey::setText(const char* name, const std::string& text, unsigned int type) const {
  return m_manager.regSetValueEx(m_handle, name, type,
                                 reinterpret_cast<const unsigned char*>(text.c_str()),
                                 static_cast<unsigned int>(text.size() + 1));
}

int OpenKey::setNumber(const char* name, std::uint32_t number) const {
  return m_manager.regSetValueEx(m_handle, name, REG_DWORD,
                                 reinterpret_cast<const unsigned char*>(&number), 4);
}

std::string OpenKey::text(const char* name) const {
  std::string ownName = name != nullptr ? name : "";
  char* asked = name != nullptr ? ownName.data() : nullptr;
  unsigned int type = 0;
  unsigned int size = 0;
  if (m_manager.regQueryValueEx(m_handle, asked, &type, nullptr, &size) != 0) {
    return "<-1>";
  }
  std::string data(size + 1, '\0');
  auto* bytes = reinterpret_cast<unsigned char*>(data.data());
  if (m_manager.regQueryValueEx(m_handle, asked, &type, bytes, &size) != 0) {
    return "<-1 for the data>";
  }
  return data.substr(0, size);
}

StoreTest::StoreTest() : m_calls(Platform::fileCalls()) {
  forgetStores();
  for (const enumRegRoot root : kRoots) {
    m_environment.push_back(
        std::make_unique<ScopedEnvironment>(registryRootName(root), store(root)));
  }
}

StoreTest::~StoreTest() {
  Platform::fileCalls() = m_calls;
  forgetStores();
}

std::string StoreTest::store(enumRegRoot root) const {
  return m_folder.path(detail::defaultFileName(root));
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

int StoreTest::load(enumRegRoot root) {
  detail::cfgEnsureLoaded({predefinedRootHandle(root), "A\\B"});
  return detail::cfgRootOf(predefinedRootHandle(root)).loaded ? 1 : 0;
}

}  // namespace LTLib::Testing
