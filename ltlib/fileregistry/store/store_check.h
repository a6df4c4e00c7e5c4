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
  kNoIdentity,    ///< the directory's identity file can neither be read nor made; the text says why
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
  kComment,       ///< a line that is no header and no value, and not empty; a save loses it
  kTextBehind,    ///< text behind a header or a value; a save loses it
  kOtherForm,     ///< a header or a value that a save writes in another form
  kRepeatedKey,   ///< a header of a key that had one; a save writes the values under the first
  kRepeatedName,  ///< a value whose name the key holds already; operations see the first
  kEmptyKey,      ///< a header with no value in its key or below it; a save loses it
  kLongName,      ///< a name of 200 bytes or more, at which the enumerators end
};

/// A sentence fragment in lower case for messages, as "a header that names no key".
LTLIB_EXPORT const char* describeStoreFault(StoreFaultKind kind) noexcept;

/// One fault and its place.
struct StoreFault {
  StoreFaultKind kind = StoreFaultKind::kDroppedLine;
  std::size_t line = 0;  ///< counted from 1; 0 where the fault lies in no line
  std::string text;      ///< of that line, up to kStoreFaultText bytes; or the lock's own words
  bool lost = false;     ///< whether a save drops the line, or writes it in another form
};

/// How much a report keeps of what it finds: the first warnings with the beginning of their first
/// line, or all warnings with all of their lines, line feeds between them.
enum class StoreReportSize { kBrief, kFull };

/// How many bytes of a line a fault of a brief report keeps at most, and how many warnings it.
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
  std::size_t lostCount = 0;         ///< those whose lines a save drops or writes otherwise
  std::size_t lineCount = 0;
  std::size_t valueCount = 0;        ///< values that a load brings in
  std::vector<StoreTopKey> topKeys;  ///< as far as the file was read, in order of arrival

  /// Whether a load of the file comes to its end.
  [[nodiscard]] bool loads() const { return !fault.has_value(); }
};

/// Reads a store file under the lock of its directory. Makes the directory's identity file if that
/// is missing, as a load does. What is no regular file is not opened.
[[nodiscard]] LTLIB_EXPORT StoreReport checkStoreFile(const std::string& pathname);
[[nodiscard]] LTLIB_EXPORT StoreReport checkStoreFile(const std::string& pathname,
                                                      StoreReportSize size);

/// Writes all lines that a save would drop or write otherwise to a new file beside the store, each
/// with its number in front: ".dropped", or where that is there already ".dropped.2" and so on. The
/// file has the store's rights. Gives its pathname; empty where there is no such line. Throws
/// QSException where no such file can be made, and what LTLib::StoreGuard throws.
LTLIB_EXPORT std::string keepLostLines(const std::string& pathname);

}  // namespace LTLib

#endif  // LTLIB_FILEREGISTRY_STORE_STORE_CHECK_H
