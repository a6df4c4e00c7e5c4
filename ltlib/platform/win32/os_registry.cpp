// The narrow calls where callers have the code page, which is for keys and for names that are
// listed. Values go by the wide ones: the narrow ones would convert their texts too.
#include "ltlib/platform/os_registry.h"

#include <windows.h>

namespace LTLib::Platform {
namespace {

static_assert(sizeof(DWORD) == sizeof(unsigned int) && sizeof(wchar_t) == sizeof(char16_t));

HKEY keyOf(void* key) noexcept {
  return static_cast<HKEY>(key);
}

PHKEY resultOf(void** result) noexcept {
  return reinterpret_cast<PHKEY>(result);
}

DWORD* numberOf(unsigned int* number) noexcept {
  return reinterpret_cast<DWORD*>(number);
}

const wchar_t* nameOf(const char16_t* name) noexcept {
  return reinterpret_cast<const wchar_t*>(name);
}

}  // namespace

bool hasSystemRegistry() noexcept {
  return true;
}

namespace OsRegistry {

int closeKey(void* key) noexcept {
  return RegCloseKey(keyOf(key));
}

int openKey(void* key, const char* subKey, unsigned int options, unsigned int access,
            void** result) noexcept {
  return RegOpenKeyExA(keyOf(key), subKey, options, access, resultOf(result));
}

int createKey(void* key, const char* subKey, void** result) noexcept {
  return RegCreateKeyA(keyOf(key), subKey, resultOf(result));
}

int createKeyEx(void* key, const char* subKey, char* keyClass, unsigned int options,
                unsigned int access, void** result, unsigned int* disposition) noexcept {
  return RegCreateKeyExA(keyOf(key), subKey, 0, keyClass, options, access, nullptr,
                         resultOf(result), numberOf(disposition));
}

int deleteKey(void* key, const char* subKey) noexcept {
  return RegDeleteKeyA(keyOf(key), subKey);
}

int queryValue(void* key, const char16_t* name, unsigned int* type, unsigned char* data,
               unsigned int* dataSize) noexcept {
  return RegQueryValueExW(keyOf(key), nameOf(name), nullptr, numberOf(type), data,
                          numberOf(dataSize));
}

int setValue(void* key, const char16_t* name, unsigned int type, const unsigned char* data,
             unsigned int dataSize) noexcept {
  return RegSetValueExW(keyOf(key), nameOf(name), 0, type, data, dataSize);
}

int deleteValue(void* key, const char* name) noexcept {
  return RegDeleteValueA(keyOf(key), name);
}

int enumKeyEx(void* key, unsigned int index, char* name, unsigned int* nameSize) noexcept {
  return RegEnumKeyExA(keyOf(key), index, name, numberOf(nameSize), nullptr, nullptr, nullptr,
                       nullptr);
}

int enumKey(void* key, unsigned int index, char* name, unsigned int nameSize) noexcept {
  return RegEnumKeyA(keyOf(key), index, name, nameSize);
}

int enumValue(void* key, unsigned int index, char* name, unsigned int* nameSize,
              unsigned int* reserved, unsigned int* type, unsigned char* data,
              unsigned int* dataSize) noexcept {
  return RegEnumValueA(keyOf(key), index, name, numberOf(nameSize), numberOf(reserved),
                       numberOf(type), data, numberOf(dataSize));
}

}  // namespace OsRegistry
}  // namespace LTLib::Platform
