/// \file
/// \brief The registry backend that works on trees in memory, kept in plain text store files.
///
/// Threads: every operation may be called from any thread; each works on the tree under one lock of
/// the process. An open handle belongs to one thread at a time, and enumeration by index is stable
/// only while nobody adds or deletes.
///
/// Ownership: an open handle names a key by its path and points at nothing, so that it stays good
/// when keys come and go; it goes back to regCloseKey once.
///
/// Failure: -1 for every failure of a reg... operation. The first touch of a root reads its store
/// file and may throw QSException, or std::length_error where the folder's "qsconfig.dat" can
/// neither be read nor made; nothing is held then and the next touch tries again.
///
/// Durability: changes stay in memory until saveConfiguration writes their root.
///
/// Units: sizes are bytes; whether a terminator counts is told with each operation.
///
/// What differs from the operating system's registry: opening succeeds for keys that do not exist,
/// and reading a value adds the sections of its path to the tree in memory; a value keeps the type
/// that it was made with; binary data ends at its first NUL; a list's items hold no comma,
/// backslash or double quote; a key right below a root holds no values. A name or text that has no
/// form in a store file is refused with -1 and nothing changes.
#ifndef LTLIB_FILEREGISTRY_FILE_REGISTRY_MANAGER_H
#define LTLIB_FILEREGISTRY_FILE_REGISTRY_MANAGER_H

#include <string>

#include "ltlib/export.h"
#include "ltlib/registry/registry_manager.h"

/// The file backend. All objects of it work on the same trees.
class LTLIB_EXPORT QSFileRegistryManager : public QSRegistryManagerImpl {
 public:
  QSFileRegistryManager() = default;

  /// Frees an open handle; leaves a predefined one and null alone. Always 0.
  int regCloseKey(void* key) override;

  /// Makes a handle; touches no store. What `*result` holds is closed first. With a null `result`
  /// it gives 0 and keeps nothing. -1 for a `key` that is no predefined root, or a null `subKey`.
  int regOpenKeyEx(void* key, const char* subKey, unsigned int options, int samDesired,
                   void** result) override;

  /// Reads a value. `type` may be null, `dataSize` too if `data` is. On entry a `*type` of
  /// REG_DWORD asks for the value as a number of up to 4 bytes, whatever its type; `*type` and
  /// `*dataSize` then stay. Sizes of texts count no terminator, but one is copied along, so that
  /// `data` needs room for `*dataSize` + 1 bytes; a text longer than that is cut, with result 0.
  /// The size asked for with a null `data` is enough for any value.
  int regQueryValueEx(void* key, char* valueName, unsigned int* type, unsigned char* data,
                      unsigned int* dataSize) override;

  /// One look at the tree. A list comes as regQueryValueEx gives it, a number as 4 bytes.
  int queryWholeValue(void* key, const char* valueName, LTLib::RegistryValue& value) override;

  /// Makes the key, sets its default value to "0", whatever it was, and opens it.
  int regCreateKey(void* key, const char* subKey, void** result) override;

  /// regCreateKey; the other arguments are not looked at and `*disposition` is not written.
  int regCreateKeyEx(void* key, const char* subKey, char* keyClass, unsigned int options,
                     unsigned int samDesired, void** result, unsigned int* disposition) override;

  /// Sets a value in memory, adding the key if need be; `dataSize` bytes as far as the first NUL,
  /// for REG_DWORD 4 bytes, for REG_MULTI_SZ the whole list with its terminators.
  int regSetValueEx(void* key, const char* valueName, unsigned int type, const unsigned char* data,
                    unsigned int dataSize) override;

  /// `*nameSize` becomes the length of the name, also where the capacity cuts it: then exactly
  /// capacity bytes are copied without a terminator, with result 0. -1 past the last name.
  int regEnumKeyEx(void* key, unsigned int index, char* name, unsigned int* nameSize) override;

  /// Always -1.
  int regEnumKey(void* key, unsigned int index, char* name, unsigned int nameSize) override;

  /// The name as regEnumKeyEx gives it; the rest as regQueryValueEx does for that name.
  int regEnumValue(void* key, unsigned int index, char* name, unsigned int* nameSize,
                   unsigned int* reserved, unsigned int* type, unsigned char* data,
                   unsigned int* dataSize) override;

  /// Deletes a key without sub-keys, and its values; -1 for any other.
  int regDeleteKey(void* key, const char* subKey) override;
  /// Deletes the first value of that name; a null name is the default value's. -1 if there is none.
  int regDeleteValue(void* key, const char* valueName) override;

  /// Writes the root as this process sees it. 0, or 0x80004005 with the files as they were: bad
  /// root, store not loaded, lock or write failed, or a name or text without a form in a file. The
  /// new text is on the device when 0 comes back.
  long saveConfiguration(enumRegRoot root) override;
  /// To another file: an empty `pathname` becomes the default file name, whatever the environment
  /// says.
  long saveConfiguration(enumRegRoot root, std::string& pathname) override;

  /// The environment variable of the root's name, else the default file name.
  std::string GetConfigurationPathname(enumRegRoot root) override;
};

#endif  // LTLIB_FILEREGISTRY_FILE_REGISTRY_MANAGER_H
