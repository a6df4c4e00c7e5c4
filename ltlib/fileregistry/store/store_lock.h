// Where the stores lie, and the locks under which they are read and replaced.
//
// Lock order, outermost first: the tree's lock (roots.h), the stores' lock between the threads of
// this process, "qs_config_lock", a directory's named mutex, the system's lock on its identity file.
// "qs_config_lock" is given up before a directory's is taken. What is kept between calls is built at
// first use and never destroyed. Forks take the first two locks, or pass by a thread that waits for
// one of the others: by then all that is kept has to be whole.
#ifndef LTLIB_FILEREGISTRY_STORE_STORE_LOCK_H
#define LTLIB_FILEREGISTRY_STORE_STORE_LOCK_H

#include <map>
#include <string>

#include "ltlib/foundation/mutex.h"
#include "ltlib/foundation/named_mutex.h"
#include "ltlib/platform/files.h"
#include "ltlib/registry/registry_manager.h"

namespace LTLib::detail {

/// The file name of a root without a directory; empty for a value outside 1 to 5.
[[nodiscard]] std::string defaultFileName(enumRegRoot root);

/// The value of the environment variable that bears the root's name, even an empty one, else the
/// default file name; empty for a value outside 1 to 5. A process with more rights than its caller
/// does not look at the environment.
[[nodiscard]] std::string cfgDefaultPathname(enumRegRoot root);

/// Where a store's file lies behind the links that its pathname may be. Throws QSException with the
/// reason where a link is not to be followed or leads nowhere.
[[nodiscard]] std::string locateStore(const std::string& pathname);

/// The name of the lock of a store file's directory, which the directory's identity file holds;
/// makes that file if it is missing. Each pathname is looked up once in the life of the process.
/// Throws std::length_error if the file can neither be read nor made, and what "qs_config_lock"
/// throws.
[[nodiscard]] const std::string& cfgLockName(const std::string& pathname);

/// From a store file's pathname, as it was given, to the name of its directory's lock: what
/// cfgLockName has found so far. Nothing sets an entry right, since an identity file is not to be
/// changed while programs run. Requires: nobody else uses the stores.
[[nodiscard]] std::map<std::string, std::string>& lockNames();

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

/// Holds the system's lock on a directory's identity file, which all meet who share the directory,
/// be it from another container, session or machine; a file system without such locks is used
/// without. One thread may hold it several times. In the child of a fork it holds nothing.
/// Requires: the stores' lock is held throughout.
class FolderHold {
 public:
  /// Makes the identity file anew with the lock's name if it has gone. Throws as cfgLockName does.
  FolderHold(const std::string& pathname, const std::string& lockName);
  ~FolderHold();

  FolderHold(const FolderHold&) = delete;
  FolderHold& operator=(const FolderHold&) = delete;

 private:
  Platform::FileIdentity m_identity;
};

/// Keeps other threads, processes and machines away from the store files of one directory.
class StoreHold {
 public:
  /// `pathname` is that of a store's file itself. Throws what cfgLockName and LTLib::NamedMutex
  /// throw; nothing is held then.
  explicit StoreHold(const std::string& pathname) : StoreHold(pathname, cfgLockName(pathname)) {}

 private:
  StoreHold(const std::string& pathname, const std::string& lockName);

  // Built and undone in this order: the mutex object, the lock between threads, the mutex's lock,
  // the lock on the file.
  NamedMutex m_mutex;
  ScopedLock m_threads;
  NamedMutexHold m_processes;
  FolderHold m_folder;
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_STORE_STORE_LOCK_H
