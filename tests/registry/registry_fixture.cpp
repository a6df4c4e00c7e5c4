#include "tests/registry/registry_fixture.h"

#include <cstring>
#include <random>

namespace LTLib::Testing {
namespace {

constexpr enumRegRoot kRoots[] = {REG_ROOT_CURRENT_USER, REG_ROOT_CURRENT_CONFIG, REG_ROOT_USERS,
                                  REG_ROOT_CLASSES_ROOT, REG_ROOT_LOCAL_MACHINE};

std::unique_ptr<StoreFolder> s_stores;

class Stores : public testing::Environment {
 public:
  void SetUp() override { s_stores = std::make_unique<StoreFolder>(); }
  void TearDown() override { s_stores.reset(); }
};

testing::Environment* const s_environment = testing::AddGlobalTestEnvironment(new Stores);

QSRegistryManager& manager() {
  return *QSRegistryManager::GetInstance();
}

}  // namespace

StoreFolder::StoreFolder() {
  for (const enumRegRoot root : kRoots) {
    m_variables.push_back(std::make_unique<ScopedEnvironment>(registryRootName(root), store(root)));
  }
}

std::string StoreFolder::store(enumRegRoot root) const {
  return m_folder.path(std::string(registryRootName(root)) + ".cfg");
}

const StoreFolder& stores() {
  return *s_stores;
}

RegistryObjects::RegistryObjects()
    : m_base("Software\\ltlib_test_" + std::to_string(std::random_device{}())) {}

RegistryObjects::~RegistryObjects() {
  (void)CQSRegKey(kUser, m_base.c_str()).DeleteKey(true);
}

std::string RegistryObjects::path(const std::string& below) const {
  return below.empty() ? m_base : m_base + '\\' + below;
}

CQSRegKey RegistryObjects::key(const std::string& below) const {
  return {kUser, path(below).c_str()};
}

CQSRegValue RegistryObjects::value(const std::string& below, const char* name) const {
  return {kUser, path(below).c_str(), name};
}

void RegistryObjects::make(const std::string& below) const {
  EXPECT_EQ(value(below, "made").Write(1ul), 0) << below;
}

RawKey::RawKey(const std::string& path) {
  void* root = predefinedRootHandle(kUser);
  int result = manager().regOpenKeyEx(root, path.c_str(), 0, KEY_ALL_ACCESS, &m_handle);
  if (result > 0) {
    unsigned int disposition = 0;
    result = manager().regCreateKeyEx(root, path.c_str(), nullptr, 0, KEY_ALL_ACCESS, &m_handle,
                                      &disposition);
  }
  EXPECT_EQ(result, 0);
}

RawKey::~RawKey() {
  EXPECT_EQ(manager().regCloseKey(m_handle), 0);
}

int RawKey::set(const char* name, unsigned int type, const std::string& bytes) const {
  return manager().regSetValueEx(m_handle, name, type,
                                 reinterpret_cast<const unsigned char*>(bytes.data()),
                                 static_cast<unsigned int>(bytes.size()));
}

std::string contentOf(const CQSRegValue::e_data_struct& data) {
  const auto* bytes = static_cast<const char*>(data.pData);
  switch (data.type) {
    case CQSRegValue::DATA_STRING:
    case CQSRegValue::DATA_EXPAND_STRING:
      EXPECT_EQ(data.size, std::strlen(bytes) + facts().textTerminators);
      return bytes;
    case CQSRegValue::DATA_MULTI_STRING: {
      const char* end = bytes;
      while (*end != '\0') {
        end += std::strlen(end) + 1;
      }
      std::string items = end == bytes ? "" : std::string(bytes, end - 1);
      EXPECT_EQ(data.size, items.size() + facts().listTerminators);
      return items;
    }
    case CQSRegValue::DATA_BINARY:
      return {bytes, data.size};
    default:
      return {};
  }
}

}  // namespace LTLib::Testing
