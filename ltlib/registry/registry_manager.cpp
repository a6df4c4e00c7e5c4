// The table of the roots, the whole read of a manager that has none of its own, and the functions
// that go to the instance.
#include "ltlib/registry/registry_manager.h"

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/registry/system_numbers.h"

using LTLib::detail::kMoreData;
using LTLib::detail::kMostQueries;

namespace LTLib {
namespace {

struct RootRow {
  enumRegRoot root;
  std::int32_t handle;
  const char* name;
};

// In the order of the numbers, by which rowOf counts. Handles are 32 bits wide and take their sign
// along into a pointer, as the operating system's own do.
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

int QSRegistryManagerImpl::queryWholeValue(void* key, const char* valueName,
                                           LTLib::RegistryValue& value) {
  auto* name = const_cast<char*>(valueName);
  for (int query = 0; query < kMostQueries; ++query) {
    // A type is asked for as well as told: what the last query left there, a number's type above all,
    // would ask for the value in that form.
    unsigned int size = 0;
    value.type = REG_NONE;
    if (const int result = regQueryValueEx(key, name, &value.type, nullptr, &size); result != 0) {
      return result;
    }
    const unsigned int capacity = size;
    value.type = REG_NONE;
    // One byte more than was told, for the terminator that a manager may copy along.
    value.bytes.assign(std::size_t{capacity} + 1, '\0');
    auto* bytes = reinterpret_cast<unsigned char*>(value.bytes.data());
    const int result = regQueryValueEx(key, name, &value.type, bytes, &size);
    // A manager may cut in silence, and then only the size tells that the value has grown.
    if (result == 0 && size <= capacity) {
      value.bytes.resize(size);
      return 0;
    }
    // A value that outgrew the buffer is asked for again like one that was cut.
    if (result != 0 && result != kMoreData) {
      return result;
    }
  }
  return kMoreData;
}

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
