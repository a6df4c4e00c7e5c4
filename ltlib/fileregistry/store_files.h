// Where the stores lie, and the locks under which they are read and replaced.
#ifndef LTLIB_FILEREGISTRY_STORE_FILES_H
#define LTLIB_FILEREGISTRY_STORE_FILES_H

#include <string>

#include "ltlib/foundation/mutex.h"
#include "ltlib/foundation/named_mutex.h"
#include "ltlib/registry/registry_manager.h"

namespace LTLib::detail {

/// The file name of a root without a directory; empty for a value outside 1 to 5.
[[nodiscard]] std::string defaultFileName(enumRegRoot root);

/// The value of the environment variable that bears the root's name, even an empty one, else the
/// default file name; empty for a value outside 1 to 5.
[[nodiscard]] std::string cfgDefaultPathname(enumRegRoot root);

/// The name of the lock of a store file's directory, which the directory's identity file holds;
/// makes that file if it is missing. Each pathname is looked up once in the life of the process.
/// Throws std::length_error if the file can neither be read nor made, and what "qs_config_lock"
/// throws.
[[nodiscard]] const std::string& cfgLockName(const std::string& pathname);

/// Holds a named mutex. An owner reported as abandoned owns it all the same, so that it is given
/// up before the exception passes on.
class NamedMutexHold {
 public:
  explicit NamedMutexHold(NamedMutex& mutex);
  ~NamedMutexHold() { m_mutex.unlock(); }

  NamedMutexHold(const NamedMutexHold&) = delete;
  NamedMutexHold& operator=(const NamedMutexHold&) = delete;

 private:
  NamedMutex& m_mutex;
};

/// Keeps other threads and other processes away from the store files of one directory.
class StoreHold {
 public:
  /// Throws what cfgLockName and LTLib::NamedMutex throw; nothing is held then.
  explicit StoreHold(const std::string& pathname);

 private:
  // Built and undone in this order: the mutex object, the lock between threads, the mutex's lock.
  NamedMutex m_mutex;
  ScopedLock m_threads;
  NamedMutexHold m_processes;
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_STORE_FILES_H
