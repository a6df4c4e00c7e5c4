// Turns handles, counts and buffers of the interface into operations on the tree. The order of the
// tests within an operation shows: a refusal must not load a store, and what is to be closed is closed
// only once nothing can fail.
#include "ltlib/fileregistry/file_registry_manager.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "ltlib/fileregistry/store/store.h"
#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/fileregistry/text/list_text.h"
#include "ltlib/fileregistry/tree/roots.h"
#include "ltlib/fileregistry/tree_operations.h"

using namespace LTLib::detail;

namespace {

constexpr int kDone = 0;
constexpr int kRefused = -1;

int answer(bool done) {
  return done ? kDone : kRefused;
}

std::unique_ptr<QSFileKeyHandle> makeHandle(void* key, const char* subKey) {
  return isRootHandle(key) && subKey != nullptr
             ? std::make_unique<QSFileKeyHandle>(QSFileKeyHandle{key, subKey})
             : nullptr;
}

// The six system constants lie where no object ever does.
bool isPredefined(const void* key) {
  return placeOfPredefined(key) <= 5;
}

QSFileKeyHandle* openHandle(void* key) {
  return key == nullptr || isPredefined(key) ? nullptr : static_cast<QSFileKeyHandle*>(key);
}

// A folder's text is a text to every caller; only the file knows the difference.
unsigned int typeOf(QSCfgTypeCode code) {
  switch (code) {
    case kCfgULong:
      return REG_DWORD;
    case kCfgBinary:
      return REG_BINARY;
    case kCfgListString:
      return REG_MULTI_SZ;
    default:
      return REG_SZ;
  }
}

// Sizes count as signed 32-bit numbers; a negative one copies nothing.
std::size_t copyCount(std::size_t length, unsigned int capacity, bool withTerminator) {
  const auto room = static_cast<std::int64_t>(static_cast<std::int32_t>(capacity));
  const std::int64_t count =
      std::min(static_cast<std::int64_t>(length), room) + (withTerminator ? 1 : 0);
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

int queryNumber(QSFileKeyHandle& key, const char* name, unsigned char* data,
                const unsigned int* dataSize) {
  std::uint32_t number = 0;
  // The query comes first: it loads the root and adds the sections of the path.
  if (!cfgQueryNumber(key, name, number) || data == nullptr || dataSize == nullptr) {
    return kRefused;
  }
  std::memcpy(data, &number, std::min<std::size_t>(*dataSize, sizeof number));
  return kDone;
}

int querySize(QSFileKeyHandle& key, const char* name, unsigned int& type, unsigned int* dataSize) {
  QSCfgFieldInfo info;
  if (!cfgQueryValue(key, name, info, nullptr)) {
    return kRefused;
  }
  type = typeOf(info.type);
  if (dataSize != nullptr) {
    *dataSize = info.type == kCfgULong ? 4 : static_cast<unsigned int>(info.size);
  }
  return kDone;
}

int queryWhole(QSFileKeyHandle& key, const char* name, LTLib::RegistryValue& value) {
  QSCfgFieldInfo info;
  if (!cfgQueryValue(key, name, info, &value.bytes)) {
    return kRefused;
  }
  value.type = typeOf(info.type);
  if (info.type == kCfgULong) {
    const std::uint32_t number = numberOfText(value.bytes);
    value.bytes.assign(reinterpret_cast<const char*>(&number), sizeof number);
  } else if (info.type == kCfgListString) {
    value.bytes = unquoteListItems(value.bytes);
  }
  return kDone;
}

int queryData(QSFileKeyHandle& key, const char* name, unsigned int& type, unsigned char* data,
              unsigned int& dataSize) {
  LTLib::RegistryValue value;
  if (queryWhole(key, name, value) != kDone) {
    return kRefused;
  }
  type = value.type;
  const std::size_t size = value.bytes.size();
  if (type == REG_DWORD) {
    std::memcpy(data, value.bytes.data(), std::min<std::size_t>(dataSize, size));
    return kDone;
  }
  std::memcpy(data, value.bytes.c_str(), copyCount(size, dataSize, type != REG_BINARY));
  dataSize = static_cast<unsigned int>(size);
  return kDone;
}

// The length is told in full also where the name is cut.
int copyName(const std::string& found, char* name, unsigned int* nameSize) {
  const unsigned int capacity = *nameSize;
  *nameSize = static_cast<unsigned int>(found.size());
  std::memcpy(name, found.c_str(), std::min<std::size_t>(capacity, found.size() + 1));
  return kDone;
}

}  // namespace

int QSFileRegistryManager::regCloseKey(void* key) {
  delete openHandle(key);
  return kDone;
}

int QSFileRegistryManager::regOpenKeyEx(void* key, const char* subKey, unsigned int /*options*/,
                                        int /*samDesired*/, void** result) {
  std::unique_ptr<QSFileKeyHandle> handle = makeHandle(key, subKey);
  if (handle == nullptr) {
    return kRefused;
  }
  if (result != nullptr) {
    regCloseKey(*result);
    *result = handle.release();
  }
  return kDone;
}

int QSFileRegistryManager::regQueryValueEx(void* key, char* valueName, unsigned int* type,
                                           unsigned char* data, unsigned int* dataSize) {
  QSFileKeyHandle* handle = openHandle(key);
  if (handle == nullptr) {
    return kRefused;
  }
  // Whoever passes no type asks for no number, so that any other value does.
  unsigned int ownType = UINT_MAX;
  unsigned int& usedType = type != nullptr ? *type : ownType;
  if (usedType == REG_DWORD) {
    return queryNumber(*handle, valueName, data, dataSize);
  }
  if (data == nullptr) {
    return querySize(*handle, valueName, usedType, dataSize);
  }
  return dataSize != nullptr ? queryData(*handle, valueName, usedType, data, *dataSize) : kRefused;
}

int QSFileRegistryManager::queryWholeValue(void* key, const char* valueName,
                                           LTLib::RegistryValue& value) {
  QSFileKeyHandle* handle = openHandle(key);
  return handle != nullptr ? queryWhole(*handle, valueName, value) : kRefused;
}

int QSFileRegistryManager::regCreateKey(void* key, const char* subKey, void** result) {
  std::unique_ptr<QSFileKeyHandle> handle = makeHandle(key, subKey);
  if (handle == nullptr || !cfgCreateKey(*handle, kCfgString)) {
    return kRefused;
  }
  if (result != nullptr) {
    *result = handle.release();
  }
  return kDone;
}

int QSFileRegistryManager::regCreateKeyEx(void* key, const char* subKey, char* /*keyClass*/,
                                          unsigned int /*options*/, unsigned int /*samDesired*/,
                                          void** result, unsigned int* /*disposition*/) {
  return regCreateKey(key, subKey, result);  // virtual, so that a derived backend's counts
}

int QSFileRegistryManager::regSetValueEx(void* key, const char* valueName, unsigned int type,
                                         const unsigned char* data, unsigned int dataSize) {
  QSFileKeyHandle* handle = openHandle(key);
  if (handle == nullptr || (data == nullptr && (dataSize != 0 || type == REG_DWORD))) {
    return kRefused;
  }
  if (type == REG_DWORD) {
    std::uint32_t number = 0;
    std::memcpy(&number, data, sizeof number);
    return answer(cfgSetNumber(*handle, valueName, number));
  }
  const char* bytes = data != nullptr ? reinterpret_cast<const char*>(data) : "";
  if (type == REG_MULTI_SZ) {
    return answer(cfgSetValue(*handle, valueName, joinListItems(bytes, dataSize), kCfgListString));
  }
  const std::string_view whole(bytes, dataSize);
  return answer(cfgSetValue(*handle, valueName, whole.substr(0, whole.find('\0')),
                            type == REG_BINARY ? kCfgBinary : kCfgString));
}

int QSFileRegistryManager::regEnumKeyEx(void* key, unsigned int index, char* name,
                                        unsigned int* nameSize) {
  QSFileKeyHandle* handle = openHandle(key);
  std::string found;
  if (handle == nullptr || name == nullptr || nameSize == nullptr ||
      !cfgSectionName(*handle, index, found)) {
    return kRefused;
  }
  return copyName(found, name, nameSize);
}

int QSFileRegistryManager::regEnumKey(void* /*key*/, unsigned int /*index*/, char* /*name*/,
                                      unsigned int /*nameSize*/) {
  return kRefused;
}

int QSFileRegistryManager::regEnumValue(void* key, unsigned int index, char* name,
                                        unsigned int* nameSize, unsigned int* /*reserved*/,
                                        unsigned int* type, unsigned char* data,
                                        unsigned int* dataSize) {
  QSFileKeyHandle* handle = openHandle(key);
  std::string found;
  if (handle == nullptr || name == nullptr || nameSize == nullptr ||
      !cfgFieldName(*handle, index, found)) {
    return kRefused;
  }
  copyName(found, name, nameSize);
  // Virtual, so that a derived backend's own reading counts here too.
  return regQueryValueEx(key, found.data(), type, data, dataSize);
}

int QSFileRegistryManager::regDeleteKey(void* key, const char* subKey) {
  const std::unique_ptr<QSFileKeyHandle> handle = makeHandle(key, subKey);
  return answer(handle != nullptr && cfgDeleteKey(*handle));
}

int QSFileRegistryManager::regDeleteValue(void* key, const char* valueName) {
  QSFileKeyHandle* handle = openHandle(key);
  return answer(handle != nullptr && cfgDeleteField(*handle, valueName));
}

long QSFileRegistryManager::saveConfiguration(enumRegRoot root) {
  std::string pathname = cfgDefaultPathname(root);
  return cfgSaveFile(root, pathname);
}

long QSFileRegistryManager::saveConfiguration(enumRegRoot root, std::string& pathname) {
  return cfgSaveFile(root, pathname);
}

std::string QSFileRegistryManager::GetConfigurationPathname(enumRegRoot root) {
  return cfgDefaultPathname(root);
}
