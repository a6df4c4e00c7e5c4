#include "ltlib/registry/win32_registry_manager.h"

#include <cstring>

#include "ltlib/platform/os_registry.h"
#include "ltlib/platform/unicode.h"

namespace OsRegistry = LTLib::Platform::OsRegistry;
using LTLib::Platform::codePageToUtf16;
using LTLib::Platform::utf16ToUtf8;
using LTLib::Platform::utf8ToUtf16;

namespace {

bool isText(unsigned int type) {
  return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_LINK || type == REG_MULTI_SZ;
}

// A value's name made wide; null stands for the default value.
class WideName {
 public:
  explicit WideName(const char* name) {
    if (name != nullptr) {
      const std::size_t size = std::strlen(name) + 1;
      m_text.resize(codePageToUtf16(name, size, nullptr, 0));
      m_text.resize(codePageToUtf16(name, size, m_text.data(), m_text.size()));
    }
  }

  [[nodiscard]] const char16_t* get() const { return m_text.empty() ? nullptr : m_text.c_str(); }

 private:
  std::u16string m_text;
};

// The stored text of `bytes` bytes. One of an odd size cannot be fetched and reads as NULs.
std::u16string fetchText(void* key, const WideName& name, unsigned int bytes) {
  std::u16string text(bytes / sizeof(char16_t), u'\0');
  auto size = static_cast<unsigned int>(text.size() * sizeof(char16_t));
  (void)OsRegistry::queryValue(key, name.get(), nullptr,
                               reinterpret_cast<unsigned char*>(text.data()), &size);
  return text;
}

// Gives a text as UTF-8, as much of it as fits, and its full size.
void giveText(const std::u16string& text, unsigned char* data, unsigned int* dataSize) {
  const unsigned int capacity = *dataSize;
  const std::size_t size = utf16ToUtf8(text.data(), text.size(), nullptr, 0);
  if (data != nullptr && capacity != 0) {
    (void)utf16ToUtf8(text.data(), text.size(), reinterpret_cast<char*>(data), capacity);
  }
  *dataSize = static_cast<unsigned int>(size);
}

int setText(void* key, const WideName& name, unsigned int type, const char* text,
            std::size_t size) {
  const std::size_t count = utf8ToUtf16(text, size, nullptr, 0);
  if (count == 0) {
    return 0;
  }
  // The system looks one character further and takes a NUL that it finds there for a terminator.
  std::u16string wide(count + 1, u'\xFFFF');
  (void)utf8ToUtf16(text, size, wide.data(), count);
  return OsRegistry::setValue(key, name.get(), type,
                              reinterpret_cast<const unsigned char*>(wide.data()),
                              static_cast<unsigned int>(count * sizeof(char16_t)));
}

}  // namespace

int QSWin32RegistryManager::regCloseKey(void* key) {
  return OsRegistry::closeKey(key);
}

int QSWin32RegistryManager::regOpenKeyEx(void* key, const char* subKey, unsigned int options,
                                         int samDesired, void** result) {
  return OsRegistry::openKey(key, subKey, options, static_cast<unsigned int>(samDesired), result);
}

int QSWin32RegistryManager::regQueryValueEx(void* key, char* valueName, unsigned int* type,
                                            unsigned char* data, unsigned int* dataSize) {
  const WideName name(valueName);
  const unsigned int capacity = *dataSize;
  const int result = OsRegistry::queryValue(key, name.get(), type, nullptr, dataSize);
  if (result == 0 && isText(*type)) {
    const std::u16string text = fetchText(key, name, *dataSize);
    *dataSize = capacity;
    giveText(text, data, dataSize);
    return 0;
  }
  return data != nullptr ? OsRegistry::queryValue(key, name.get(), type, data, dataSize) : result;
}

int QSWin32RegistryManager::regCreateKey(void* key, const char* subKey, void** result) {
  return OsRegistry::createKey(key, subKey, result);
}

int QSWin32RegistryManager::regCreateKeyEx(void* key, const char* subKey, char* keyClass,
                                           unsigned int options, unsigned int samDesired,
                                           void** result, unsigned int* disposition) {
  return OsRegistry::createKeyEx(key, subKey, keyClass, options, samDesired, result, disposition);
}

int QSWin32RegistryManager::regSetValueEx(void* key, const char* valueName, unsigned int type,
                                          const unsigned char* data, unsigned int dataSize) {
  const WideName name(valueName);
  if (!isText(type)) {
    return OsRegistry::setValue(key, name.get(), type, data, dataSize);
  }
  return data != nullptr ? setText(key, name, type, reinterpret_cast<const char*>(data), dataSize)
                         : 0;
}

int QSWin32RegistryManager::regEnumKeyEx(void* key, unsigned int index, char* name,
                                         unsigned int* nameSize) {
  return OsRegistry::enumKeyEx(key, index, name, nameSize);
}

int QSWin32RegistryManager::regEnumKey(void* key, unsigned int index, char* name,
                                       unsigned int nameSize) {
  return OsRegistry::enumKey(key, index, name, nameSize);
}

int QSWin32RegistryManager::regEnumValue(void* key, unsigned int index, char* name,
                                         unsigned int* nameSize, unsigned int* reserved,
                                         unsigned int* type, unsigned char* data,
                                         unsigned int* dataSize) {
  return OsRegistry::enumValue(key, index, name, nameSize, reserved, type, data, dataSize);
}

int QSWin32RegistryManager::regDeleteKey(void* key, const char* subKey) {
  return OsRegistry::deleteKey(key, subKey);
}

int QSWin32RegistryManager::regDeleteValue(void* key, const char* valueName) {
  return OsRegistry::deleteValue(key, valueName);
}

long QSWin32RegistryManager::saveConfiguration(enumRegRoot) {
  return 0;
}

long QSWin32RegistryManager::saveConfiguration(enumRegRoot, std::string&) {
  return 0;
}

std::string QSWin32RegistryManager::GetConfigurationPathname(enumRegRoot) {
  return {};
}
