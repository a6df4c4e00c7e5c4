#include "ltlib/registry/registry_manager.h"

#include "ltlib/foundation/kqsresult.h"

namespace LTLib {
namespace {

struct RootRow {
  enumRegRoot root;
  std::int32_t handle;
  const char* name;
};

constexpr RootRow kRoots[] = {
    {REG_ROOT_CURRENT_USER, static_cast<std::int32_t>(0x80000001u), "HKEY_CURRENT_USER"},
    {REG_ROOT_CURRENT_CONFIG, static_cast<std::int32_t>(0x80000005u), "HKEY_CURRENT_CONFIG"},
    {REG_ROOT_USERS, static_cast<std::int32_t>(0x80000003u), "HKEY_USERS"},
    {REG_ROOT_CLASSES_ROOT, static_cast<std::int32_t>(0x80000000u), "HKEY_CLASSES_ROOT"},
    {REG_ROOT_LOCAL_MACHINE, static_cast<std::int32_t>(0x80000002u), "HKEY_LOCAL_MACHINE"},
};

const RootRow* rowOf(enumRegRoot root) {
  return root >= REG_ROOT_CURRENT_USER && root <= REG_ROOT_LOCAL_MACHINE ? &kRoots[root - 1]
                                                                         : nullptr;
}

}  // namespace

void* predefinedRootHandle(enumRegRoot root) noexcept {
  const RootRow* row = rowOf(root);
  return row != nullptr ? reinterpret_cast<void*>(static_cast<std::intptr_t>(row->handle))
                        : nullptr;
}

const char* registryRootName(enumRegRoot root) noexcept {
  const RootRow* row = rowOf(root);
  return row != nullptr ? row->name : nullptr;
}

}  // namespace LTLib

long SaveConfiguration(enumRegRoot root) {
  QSRegistryManager* manager = QSRegistryManager::GetInstance();
  return manager != nullptr ? manager->saveConfiguration(root) : LTLib::kFailure;
}

long SaveConfiguration(enumRegRoot root, std::string& pathname) {
  QSRegistryManager* manager = QSRegistryManager::GetInstance();
  return manager != nullptr ? manager->saveConfiguration(root, pathname) : LTLib::kFailure;
}

std::string GetConfigurationPathname(enumRegRoot root) {
  QSRegistryManager* manager = QSRegistryManager::GetInstance();
  return manager != nullptr ? manager->GetConfigurationPathname(root) : std::string();
}
