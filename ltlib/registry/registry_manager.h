/// \file
/// \brief The one door to the registry: keys and typed values under five roots, behind one
/// interface.
///
/// Threads: the instance may be used from any thread. An open handle belongs to one thread at a
/// time.
///
/// Forks: the child has the registry as it stood, unsaved changes included, and may use it. A fork
/// waits until other threads have left the file backend, and their LTLib::StoreGuards too, but not
/// for one that itself waits for another process.
///
/// Ownership: an open handle has one owner, who gives it to regCloseKey once. A predefined root
/// handle is never opened and never closed. All texts and buffers are the caller's.
///
/// Failure: the reg... operations give 0 or a number: the operating system's positive error number
/// on the operating system's backend, -1 on the file backend. They throw nothing of their own; the
/// first touch of a root of the file backend reads its store file, and what that throws passes
/// through: QSException, or std::length_error where the store's folder is missing or takes no file
/// "qsconfig.dat" from this user and has none. The save operations give a result code.
///
/// Units: sizes are bytes. Key paths are narrow texts of components joined by one backslash,
/// relative to a root. A null value name means the key's default value.
#ifndef LTLIB_REGISTRY_REGISTRY_MANAGER_H
#define LTLIB_REGISTRY_REGISTRY_MANAGER_H

#include <cstdint>
#include <string>

#include "ltlib/export.h"

/// The registry's roots; the numbering is this library's own.
enum enumRegRoot : std::int32_t {
  REG_ROOT_NONE = 0,
  REG_ROOT_CURRENT_USER = 1,
  REG_ROOT_CURRENT_CONFIG = 2,
  REG_ROOT_USERS = 3,
  REG_ROOT_CLASSES_ROOT = 4,
  REG_ROOT_LOCAL_MACHINE = 5,
};

// Value types and access masks bear the operating system's numbers. Where its own header was read
// first they are macros of the same names and numbers already.
#ifndef REG_SZ
inline constexpr unsigned int REG_NONE = 0;
inline constexpr unsigned int REG_SZ = 1;
inline constexpr unsigned int REG_EXPAND_SZ = 2;
inline constexpr unsigned int REG_BINARY = 3;
inline constexpr unsigned int REG_DWORD = 4;
inline constexpr unsigned int REG_LINK = 6;
inline constexpr unsigned int REG_MULTI_SZ = 7;
inline constexpr unsigned int REG_QWORD = 11;
#endif
#ifndef KEY_READ
inline constexpr int KEY_READ = 0x20019;
inline constexpr int KEY_ALL_ACCESS = 0xF003F;
#endif

namespace LTLib {

/// The predefined handle of a root: the system's 32-bit constant, sign-extended to the width of a
/// pointer. Null for any value outside 1 to 5.
LTLIB_EXPORT void* predefinedRootHandle(enumRegRoot root) noexcept;

/// The name of a root, as "HKEY_LOCAL_MACHINE". Null for any value outside 1 to 5.
LTLIB_EXPORT const char* registryRootName(enumRegRoot root) noexcept;

/// A value as it stood at one moment.
struct RegistryValue {
  unsigned int type = REG_NONE;
  std::string bytes;  // all of them; a text's terminators as regQueryValueEx counts them
};

}  // namespace LTLib

// The interface is never deleted through, and a destructor would be one more virtual operation.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// The registry interface, with the shape of the operating system's registry calls.
class LTLIB_EXPORT QSRegistryManager {
 public:
  /// The one instance, built at the first call: on the file backend if "registry.dat" lies beside
  /// the library or the system has no registry, else on the operating system's. The choice stands
  /// for the life of the process. Null once the library has ended.
  static QSRegistryManager* GetInstance();

  /// Closes an open handle. A null handle gives 0 on the file backend.
  virtual int regCloseKey(void* key) = 0;

  /// Opens the key `subKey` below a root and stores its handle in `*result`, which holds null or
  /// an open handle on entry. On the file backend this succeeds for a missing key too.
  virtual int regOpenKeyEx(void* key, const char* subKey, unsigned int options, int samDesired,
                           void** result) = 0;

  /// Reads a value. With a null `data` stores type and size alone; otherwise copies up to
  /// `*dataSize` bytes and the terminator of a text, so that the buffer needs room for
  /// `*dataSize` + 1, and stores the value's size there. On the file backend a `*type` of
  /// REG_DWORD on entry reads the value as a number of 4 bytes, whatever its type.
  virtual int regQueryValueEx(void* key, char* valueName, unsigned int* type, unsigned char* data,
                              unsigned int* dataSize) = 0;

  /// Opens a key, making it and its parents if need be.
  virtual int regCreateKey(void* key, const char* subKey, void** result) = 0;

  /// As regCreateKey, with the further arguments of the operating system's call.
  virtual int regCreateKeyEx(void* key, const char* subKey, char* keyClass, unsigned int options,
                             unsigned int samDesired, void** result, unsigned int* disposition) = 0;

  /// Writes a value of `dataSize` bytes, terminators included.
  virtual int regSetValueEx(void* key, const char* valueName, unsigned int type,
                            const unsigned char* data, unsigned int dataSize) = 0;

  /// Copies the name of the sub-key at `index` with its terminator. `*nameSize` is the capacity on
  /// entry and the length without terminator afterwards.
  virtual int regEnumKeyEx(void* key, unsigned int index, char* name, unsigned int* nameSize) = 0;

  /// As regEnumKeyEx, with the capacity by value. The file backend has no such operation: -1.
  virtual int regEnumKey(void* key, unsigned int index, char* name, unsigned int nameSize) = 0;

  /// Copies the name of the value at `index` as regEnumKeyEx does, and reads its type and data as
  /// regQueryValueEx does where they are asked for.
  virtual int regEnumValue(void* key, unsigned int index, char* name, unsigned int* nameSize,
                           unsigned int* reserved, unsigned int* type, unsigned char* data,
                           unsigned int* dataSize) = 0;

  /// Deletes the key `subKey` below a root with its values; refuses one that has sub-keys.
  virtual int regDeleteKey(void* key, const char* subKey) = 0;

  /// Deletes a value.
  virtual int regDeleteValue(void* key, const char* valueName) = 0;

  /// Writes a root to its store file: 0 or 0x80004005. Does nothing and gives 0 on the operating
  /// system's backend, where every change is durable at once.
  virtual long saveConfiguration(enumRegRoot root) = 0;

  /// As above, to `pathname`; an empty one is replaced by the root's default file name.
  virtual long saveConfiguration(enumRegRoot root, std::string& pathname) = 0;

  /// The file that holds a root; empty for a value outside 1 to 5, and on the operating system's
  /// backend.
  virtual std::string GetConfigurationPathname(enumRegRoot root) = 0;
};

/// What both backends derive from.
class LTLIB_EXPORT QSRegistryManagerImpl : public QSRegistryManager {
 public:
  virtual ~QSRegistryManagerImpl() = default;

  /// Reads type and all bytes of a value as one write left them. Two calls of regQueryValueEx
  /// cannot: the value may grow between that of the size and that of the data. 0 or the number
  /// that regQueryValueEx gives; 234 for a value that outgrew its buffer 100 times in a row.
  ///
  /// A manager that does not override this is asked by regQueryValueEx with a buffer of
  /// `*dataSize` + 1 bytes, and must write no more than that.
  virtual int queryWholeValue(void* key, const char* valueName, LTLib::RegistryValue& value);
};

#pragma GCC diagnostic pop

namespace LTLib {

enum class RegistryBackend { kFiles, kSystem };

/// Makes the instance, unless there is one, whatever the marker says: for tools, at the start of a
/// process. False if the instance is of the other backend or has ended, or if the system has no
/// registry of its own; nothing is made then.
LTLIB_EXPORT bool forceRegistryBackend(RegistryBackend backend);

}  // namespace LTLib

/// Saves a root through the instance: how a program makes its changes in a file registry last.
/// 0, or 0x80004005 sign-extended. Nothing saves by itself.
LTLIB_EXPORT long SaveConfiguration(enumRegRoot root);
LTLIB_EXPORT long SaveConfiguration(enumRegRoot root, std::string& pathname);

/// The file that holds a root, by the instance; an empty text once the library has ended.
LTLIB_EXPORT std::string GetConfigurationPathname(enumRegRoot root);

#endif  // LTLIB_REGISTRY_REGISTRY_MANAGER_H
