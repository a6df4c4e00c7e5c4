/// \file
/// \brief What is wrong with a store file, told line by line.
///
/// A load by the file backend passes over most malformed lines in silence and tells no place when
/// it fails. The check reads the same file with the same reader and keeps the places.
///
/// Threads: may be called from any thread; the process's own trees are not touched. It waits for
/// the lock of the file's folder without limit.
///
/// Ownership: a report is a plain value and belongs to the caller.
///
/// Failure: everything that is wrong with the file or its lock is in the report; only memory can
/// run out.
///
/// Units: lines are counted from 1, texts are bytes as they stand in the file.
#ifndef LTLIB_FILEREGISTRY_STORE_STORE_CHECK_H
#define LTLIB_FILEREGISTRY_STORE_STORE_CHECK_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ltlib/export.h"

namespace LTLib {

/// What can be wrong with a store file. All up to kUnendedValue stop a load, the others do not.
enum class StoreFaultKind {
  kLockFailed,    ///< the directory's lock could not be taken; the text says why
  kForeignLink,   ///< a link that is not to be followed; the text says why
  kNoFile,        ///< a folder, a device or the like
  kUnreadable,    ///< the file cannot be opened
  kReadError,     ///< the system failed to read on behind this line
  kBadHeader,     ///< a header that names no key
  kUnendedValue,  ///< a quoted value that begins in this line and never ends
  kEmptyValue,    ///< a value without a text where its type wants one; it reads as empty
  kDroppedLine,   ///< a value line without a name or with an unknown type; a save loses it
  kNoKey,         ///< a value ahead of the first header; a save loses it
  kIndentedLine,  ///< what looks like a header or a value behind blanks; a save loses it
  kOutOfReach,    ///< a value of a key right below the root, which no operation can read
  kNotSavable,    ///< a key or a value that no save can write, so that every save is refused
};

/// A sentence fragment in lower case for messages, as "a header that names no key".
LTLIB_EXPORT const char* describeStoreFault(StoreFaultKind kind) noexcept;

/// One fault and its place.
struct StoreFault {
  StoreFaultKind kind = StoreFaultKind::kDroppedLine;
  std::size_t line = 0;  ///< counted from 1; 0 where the fault lies in no line
  std::string text;      ///< of that line, up to kStoreFaultText bytes; or the lock's own words
};

/// How many bytes of a line a fault keeps at most, and how many warnings a report.
inline constexpr std::size_t kStoreFaultText = 200;
inline constexpr std::size_t kMostStoreWarnings = 1000;

/// A key right below the root, whose sub-keys the file backend cannot enumerate.
struct StoreTopKey {
  std::string name;
  std::vector<std::string> subKeys;
};

/// What a check has found.
struct StoreReport {
  bool exists = false;               ///< an absent file loads as an empty one
  std::vector<std::string> left;     ///< beside an absent file, what a save has left there
  std::optional<StoreFault> fault;   ///< what stops a load, if anything does
  std::vector<StoreFault> warnings;  ///< the first kMostStoreWarnings of them, up to the fault
  std::size_t warningCount = 0;      ///< all of them
  std::size_t lineCount = 0;
  std::size_t valueCount = 0;        ///< values that a load brings in
  std::vector<StoreTopKey> topKeys;  ///< as far as the file was read, in order of arrival

  /// Whether a load of the file comes to its end.
  [[nodiscard]] bool loads() const { return !fault.has_value(); }
};

/// Reads a store file under the lock of its directory. Makes the directory's identity file if that
/// is missing, as a load does. What is no regular file is not opened.
[[nodiscard]] LTLIB_EXPORT StoreReport checkStoreFile(const std::string& pathname);

}  // namespace LTLib

#endif  // LTLIB_FILEREGISTRY_STORE_STORE_CHECK_H
