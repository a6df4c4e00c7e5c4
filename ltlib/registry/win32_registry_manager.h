/// \file
/// \brief The registry backend that hands each operation to the operating system's registry.
///
/// Threads: it has no state; the system serialises its registry.
///
/// Ownership: a handle is the system's own and goes back to regCloseKey once. The caller's buffers
/// are never kept.
///
/// Failure: 0 or the system's positive error number, unchanged: 2 for a key or value that is not
/// there, 234 for a name longer than its buffer, 259 past the last name.
///
/// Durability: every change reaches the system at once.
///
/// Text: the data of values is UTF-8 for the caller and UTF-16 in the registry, for the types
/// REG_SZ, REG_EXPAND_SZ, REG_LINK and REG_MULTI_SZ; sizes are bytes of UTF-8 with the terminator,
/// if the stored text has one. Key paths and all names are in the system's code page.
///
/// On a system without a registry each operation that would reach it gives 120 and stores nothing;
/// the library itself never picks the class there.
#ifndef LTLIB_REGISTRY_WIN32_REGISTRY_MANAGER_H
#define LTLIB_REGISTRY_WIN32_REGISTRY_MANAGER_H

#include <string>

#include "ltlib/export.h"
#include "ltlib/registry/registry_manager.h"

class LTLIB_EXPORT QSWin32RegistryManager : public QSRegistryManagerImpl {
 public:
  QSWin32RegistryManager() = default;

  /// 6 for a handle that is not open, null among them. A predefined one stays open.
  int regCloseKey(void* key) override;

  /// 2 for a key that does not exist. `*result` is not looked at. Requires: `result` is not null,
  /// here and below.
  int regOpenKeyEx(void* key, const char* subKey, unsigned int options, int samDesired,
                   void** result) override;

  /// Reads a value; `*type` is not looked at. `*dataSize` is the capacity on entry and becomes the
  /// value's full size. A text too long for the capacity is cut, with result 0. Any other value is
  /// written whole, whatever the capacity says: `data` needs room for the size that a call with a
  /// null `data` gave. Requires: `type` and `dataSize` are not null.
  int regQueryValueEx(void* key, char* valueName, unsigned int* type, unsigned char* data,
                      unsigned int* dataSize) override;

  /// As regQueryValueEx with room for all; a text comes as UTF-8.
  int queryWholeValue(void* key, const char* valueName, LTLib::RegistryValue& value) override;

  /// Makes the key and missing parents, or opens what exists.
  int regCreateKey(void* key, const char* subKey, void** result) override;

  /// As regCreateKey; `*disposition` becomes 1 for a new key and 2 for one that existed.
  int regCreateKeyEx(void* key, const char* subKey, char* keyClass, unsigned int options,
                     unsigned int samDesired, void** result, unsigned int* disposition) override;

  /// Writes a value, its type included. A text of no bytes, or without `data`, writes nothing and
  /// gives 0.
  int regSetValueEx(void* key, const char* valueName, unsigned int type, const unsigned char* data,
                    unsigned int dataSize) override;

  /// 234 if the name and its terminator are longer than `*nameSize`, 259 past the last name.
  int regEnumKeyEx(void* key, unsigned int index, char* name, unsigned int* nameSize) override;

  /// As regEnumKeyEx, with the capacity by value.
  int regEnumKey(void* key, unsigned int index, char* name, unsigned int nameSize) override;

  /// The name as regEnumKeyEx gives it. Data of a text comes in the system's code page, not as
  /// UTF-8. `reserved` must be null.
  int regEnumValue(void* key, unsigned int index, char* name, unsigned int* nameSize,
                   unsigned int* reserved, unsigned int* type, unsigned char* data,
                   unsigned int* dataSize) override;

  /// 5 for a key that has sub-keys.
  int regDeleteKey(void* key, const char* subKey) override;
  int regDeleteValue(void* key, const char* valueName) override;

  /// 0; nothing is left to save. `pathname` stays as it is.
  long saveConfiguration(enumRegRoot root) override;
  long saveConfiguration(enumRegRoot root, std::string& pathname) override;

  /// Empty: no file holds a root.
  std::string GetConfigurationPathname(enumRegRoot root) override;
};

#endif  // LTLIB_REGISTRY_WIN32_REGISTRY_MANAGER_H
