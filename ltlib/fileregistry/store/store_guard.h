/// \file
/// \brief Reading, changing and saving a store with nobody in between.
///
/// A process reads a root once and a save replaces the whole file, so that of two processes whose
/// changes overlap the last one stands. A program that holds a guard from before its first touch of
/// the root to the end of its save loses no change of another program that does the same.
///
/// Threads: a guard belongs to the thread that made it. While it lives the other threads of the
/// process wait in the file backend, and in a fork.
///
/// Ownership: the caller owns the guard; it holds locks alone and no file's content.
///
/// Failure: the constructor throws, and nothing is held then; the destructor is quiet.
#ifndef LTLIB_FILEREGISTRY_STORE_STORE_GUARD_H
#define LTLIB_FILEREGISTRY_STORE_STORE_GUARD_H

#include <memory>
#include <string>

#include "ltlib/export.h"

namespace LTLib {

/// Keeps other processes from reading and replacing the store files in the directory of one of
/// them; behind a link that is the directory of its target. While it lives the thread that made it
/// uses the file backend as ever, and the other threads of the process wait in it, and in a fork. In
/// the child of a fork it keeps nobody out.
class LTLIB_EXPORT StoreGuard {
 public:
  /// Waits without limit. Throws what LTLib::NamedMutex throws, QSException for a link that is not
  /// to be followed, and std::length_error where the directory's identity file can neither be read
  /// nor made; nothing is held then. A lock that its last owner abandoned is told once by such an
  /// exception and obtained by the next try.
  explicit StoreGuard(const std::string& pathname);

  /// Requires: the thread that made it.
  ~StoreGuard();
  StoreGuard(const StoreGuard&) = delete;
  StoreGuard& operator=(const StoreGuard&) = delete;

 private:
  struct Holds;
  std::unique_ptr<Holds> m_holds;
};

}  // namespace LTLib

#endif  // LTLIB_FILEREGISTRY_STORE_STORE_GUARD_H
