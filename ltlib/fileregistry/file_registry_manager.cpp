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
#include <typeinfo>

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
  return isRootHandle(key) && subKey != nullptr ? QSFileKeyHandle::make(key, subKey) : nullptr;
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

// So many bytes of a text with the terminator that does not stand behind it.
template <class Byte>
void copyBytes(Byte* to, std::string_view text, std::size_t count) {
  std::copy_n(text.begin(), std::min(count, text.size()), to);
  if (count > text.size()) {
    to[text.size()] = 0;
  }
}

// Sizes count as signed 32-bit numbers; a negative one copies nothing.
std::size_t copyCount(std::size_t length, unsigned int capacity, bool withTerminator) {
  const auto room = static_cast<std::int64_t>(static_cast<std::int32_t>(capacity));
  const std::int64_t count =
      std::min(static_cast<std::int64_t>(length), room) + (withTerminator ? 1 : 0);
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

// In a copy alone: the file has the commas.
std::string listItems(std::string_view text) {
  std::string parted(text);
  std::replace(parted.begin(), parted.end(), ',', '\\');
  return unquoteListItems(parted);
}

// A number comes as its bytes, a list unpacked, and all else as it stands.
template <class Use>
void withBytes(const QSCfgDataField& field, Use use) {
  if (field.type() == kCfgULong) {
    const std::uint32_t number = numberOfText(field.getValue());
    use(std::string_view(reinterpret_cast<const char*>(&number), sizeof number));
  } else if (field.type() == kCfgListString) {
    use(listItems(field.getValue()));
  } else {
    use(field.getValue());
  }
}

int readSize(const QSCfgDataField& field, unsigned int* dataSize) {
  if (dataSize != nullptr) {
    *dataSize = field.type() == kCfgULong ? 4 : static_cast<unsigned int>(field.getValue().size());
  }
  return kDone;
}

int readNumber(const QSCfgDataField& field, unsigned char* data, const unsigned int* dataSize) {
  if (data == nullptr || dataSize == nullptr) {
    return kRefused;
  }
  const std::uint32_t number = numberOfText(field.getValue());
  std::memcpy(data, &number, std::min<std::size_t>(*dataSize, sizeof number));
  return kDone;
}

int readData(const QSCfgDataField& field, unsigned char* data, unsigned int& dataSize) {
  withBytes(field, [&](std::string_view bytes) {
    copyBytes(data, bytes, copyCount(bytes.size(), dataSize, field.type() != kCfgBinary));
    dataSize = static_cast<unsigned int>(bytes.size());
  });
  return kDone;
}

// Whoever passes no type asks for no number, so that any other value does.
bool asksForNumber(const unsigned int* type) {
  return type != nullptr && *type == REG_DWORD;
}

int readField(const QSCfgDataField& field, unsigned int* type, unsigned char* data,
              unsigned int* dataSize) {
  if (asksForNumber(type)) {
    return readNumber(field, data, dataSize);
  }
  if (type != nullptr) {
    *type = typeOf(field.type());
  }
  if (data == nullptr) {
    return readSize(field, dataSize);
  }
  return field.type() == kCfgULong ? readNumber(field, data, dataSize)
                                   : readData(field, data, *dataSize);
}

// The length is told in full also where the name is cut.
void copyName(std::string_view found, char* name, unsigned int* nameSize) {
  copyBytes(name, found, std::min<std::size_t>(*nameSize, found.size() + 1));
  *nameSize = static_cast<unsigned int>(found.size());
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
  if (handle == nullptr || (data != nullptr && dataSize == nullptr && !asksForNumber(type))) {
    return kRefused;
  }
  int result = kRefused;
  cfgQueryField(*handle, valueName, [&](const QSCfgDataField& field) {
    result = readField(field, type, data, dataSize);
  });
  return result;
}

int QSFileRegistryManager::queryWholeValue(void* key, const char* valueName,
                                           LTLib::RegistryValue& value) {
  QSFileKeyHandle* handle = openHandle(key);
  return answer(handle != nullptr &&
                cfgQueryField(*handle, valueName, [&](const QSCfgDataField& field) {
                  value.type = typeOf(field.type());
                  withBytes(field, [&](std::string_view bytes) { value.bytes = bytes; });
                }));
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
  if (handle == nullptr || name == nullptr || nameSize == nullptr) {
    return kRefused;
  }
  KeyLook look(*handle, KeyLook::Missing::kStays);
  const QSCfgDataSection* const child = look.childAt(index);
  if (child != nullptr) {
    copyName(child->name(), name, nameSize);
  }
  return answer(child != nullptr);
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
  if (handle == nullptr || name == nullptr || nameSize == nullptr) {
    return kRefused;
  }
  std::string whole;
  {
    KeyLook look(*handle, KeyLook::Missing::kStays);
    const QSCfgDataField* const field = look.fieldAt(index);
    if (field == nullptr) {
      return kRefused;
    }
    copyName(field->name(), name, nameSize);
    // A derived backend's own reading counts here too; where there is none one look does for both.
    if (typeid(*this) == typeid(QSFileRegistryManager)) {
      return data != nullptr && dataSize == nullptr && !asksForNumber(type)
                 ? kRefused
                 : readField(*look.field(field->name()), type, data, dataSize);
    }
    whole = field->name();
  }
  return regQueryValueEx(key, whole.data(), type, data, dataSize);
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
