// Two worlds meet here: callers have narrow texts, the registry has UTF-16. Only names and texts are
// converted; all other data passes through as it is.
#include "ltlib/registry/win32_registry_manager.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "ltlib/platform/os_registry.h"
#include "ltlib/platform/unicode.h"
#include "ltlib/registry/system_numbers.h"

using namespace LTLib::detail;
namespace OsRegistry = LTLib::Platform::OsRegistry;
using LTLib::Platform::codePageToUtf16;
using LTLib::Platform::utf16ToUtf8;
using LTLib::Platform::utf8ToUtf16;

namespace {

// Most values are shorter, and one query then does.
constexpr unsigned int kFirstSize = 512;

bool isText(unsigned int type) {
  return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_LINK || type == REG_MULTI_SZ;
}

// A value's name made wide; null stands for the default value.
class WideName {
 public:
  explicit WideName(const char* name) {
    if (name != nullptr) {
      const std::size_t size = std::strlen(name) + 1;
      // Measured first: in some code pages one byte makes several units.
      m_text.resize(codePageToUtf16(name, size, nullptr, 0));
      m_text.resize(codePageToUtf16(name, size, m_text.data(), m_text.size()));
    }
  }

  [[nodiscard]] const char16_t* get() const { return m_text.empty() ? nullptr : m_text.c_str(); }

 private:
  std::u16string m_text;
};

// All the bytes of a value, first asked for with room for `size` of them, which then is their count.
// Where others let the value grow meanwhile it is asked for again. A text of an odd size fails where
// there is room for whole characters alone.
int fetch(void* key, const WideName& name, unsigned int& type, std::u16string& units,
          unsigned int& size) {
  int result = kMoreData;
  for (int query = 0; result == kMoreData && query < kMostQueries; ++query) {
    units.resize(std::max(units.size(), (std::size_t{size} + 1) / sizeof(char16_t)));
    size = static_cast<unsigned int>(units.size() * sizeof(char16_t));
    result = OsRegistry::queryValue(key, name.get(), &type,
                                    reinterpret_cast<unsigned char*>(units.data()), &size);
  }
  return result;
}

// The text in the first `size` bytes; what is left of an odd number is no character.
std::u16string_view textOf(const std::u16string& units, unsigned int size) {
  return std::u16string_view(units).substr(0, size / sizeof(char16_t));
}

// Gives a text as UTF-8, as much of it as fits, and tells its full size.
unsigned int giveText(std::u16string_view text, unsigned char* data, unsigned int capacity) {
  if (data != nullptr && capacity != 0) {
    (void)utf16ToUtf8(text.data(), text.size(), reinterpret_cast<char*>(data), capacity);
  }
  return static_cast<unsigned int>(utf16ToUtf8(text.data(), text.size(), nullptr, 0));
}

std::string utf8Of(std::u16string_view text) {
  std::string utf8(utf16ToUtf8(text.data(), text.size(), nullptr, 0), '\0');
  (void)utf16ToUtf8(text.data(), text.size(), utf8.data(), utf8.size());
  return utf8;
}

int setText(void* key, const WideName& name, unsigned int type, const char* text,
            std::size_t size) {
  const std::size_t count = utf8ToUtf16(text, size, nullptr, 0);
  // The system would take no bytes for a value that is there and empty.
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
  // Kept, since each query below writes the size that it finds over the caller's.
  const unsigned int capacity = *dataSize;
  for (int query = 0; query < kMostQueries; ++query) {
    int result = OsRegistry::queryValue(key, name.get(), type, nullptr, dataSize);
    const bool text = result == 0 && isText(*type);
    std::u16string units;
    // A text has to be there whole to be converted, however little of it is asked for.
    if (text) {
      result = fetch(key, name, *type, units, *dataSize);
    } else if (data != nullptr) {
      result = OsRegistry::queryValue(key, name.get(), type, data, dataSize);
    }
    // What became a text in between, or ceased to be one, is not what was asked for; once more then.
    if (result != 0 || isText(*type) == text) {
      if (result == 0 && text) {
        *dataSize = giveText(textOf(units, *dataSize), data, capacity);
      }
      return result;
    }
  }
  return kMoreData;
}

int QSWin32RegistryManager::queryWholeValue(void* key, const char* valueName,
                                            LTLib::RegistryValue& value) {
  std::u16string units;
  unsigned int size = kFirstSize;
  const int result = fetch(key, WideName(valueName), value.type, units, size);
  if (result == 0 && isText(value.type)) {
    value.bytes = utf8Of(textOf(units, size));
  } else if (result == 0) {
    value.bytes.assign(reinterpret_cast<const char*>(units.data()), size);
  }
  return result;
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
