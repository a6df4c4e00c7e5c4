// Files as the store needs them, behind one table of calls.
//
// All calls take narrow pathnames of the system and report by their results; std::bad_alloc is all
// that they throw. What is opened is a regular file or nothing: no call waits for a pipe, reads a
// device without end or takes a folder for a file. The table is process-wide; a test puts its own
// functions in to make any one call fail. Changing it while another thread works with files is not
// safe.
#ifndef LTLIB_PLATFORM_FILES_H
#define LTLIB_PLATFORM_FILES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace LTLib::Platform {

/// An open file; only the platform's side knows its shape.
struct File;

enum class FileResult {
  kDone,
  kAbsent,       // there is no such file
  kUnsupported,  // this file system cannot do that
  kForeignLink,  // a link that somebody has laid whom the caller need not trust
  kFailed,       // lastFileFailure says why
};

/// Which file it is, whatever its names; equal for the same file alone.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  bool operator==(const FileIdentity&) const = default;
};

/// What a pathname or an open file is; a link is itself and not what it leads to.
struct FileStatus {
  bool regular = false;
  FileIdentity identity;
};

/// Whether a link in the last place of a pathname leads to a file.
enum class Links { kFollowed, kRefused };

struct FileCalls {
  /// Follows the links in the last place of a pathname, as far as they belong to the caller, to
  /// the administrator or to the owner of the folder that they lie in. `target` becomes the
  /// pathname behind them, which need not exist; without a link it is `path`.
  FileResult (*resolve)(const char* path, std::string* target);

  /// Opens a file for reading in the system's text mode, denying nothing to others.
  FileResult (*open)(const char* path, Links links, File** file);

  /// Makes a file for writing in the system's text mode, which nobody had before: anything that
  /// bears the name, a link included, is a failure. With `like`, owner, group and permissions are
  /// those of that file before the first byte is written; where the system refuses the owner or
  /// the group, the permissions are cut down until nobody has more than before. A file that must
  /// not be written has no like.
  FileResult (*create)(const char* path, const char* like, File** file);

  /// As create, for a file that everybody may read who reaches its folder.
  FileResult (*createForAll)(const char* path, File** file);

  /// Reads up to `capacity` bytes; `taken` is 0 at the end of the file alone.
  FileResult (*read)(File& file, char* buffer, std::size_t capacity, std::size_t* taken);

  /// Writes all the bytes or fails.
  FileResult (*write)(File& file, const char* bytes, std::size_t count);

  /// Brings what was written to the device.
  FileResult (*flush)(File& file);

  /// Waits for the system's lock on the file, which excludes all who lock that file through another
  /// opening, in this process or on another machine; without limit but for that of lock_wait.h. It
  /// goes with the opening.
  FileResult (*lock)(File& file);

  /// Closes and frees the file, whatever the result.
  FileResult (*close)(File* file);

  /// Whether anything of that name is there, and what.
  FileResult (*status)(const char* path, FileStatus* found);
  FileResult (*statusOf)(File& file, FileStatus* found);

  /// Removes a file or a link, never a folder.
  FileResult (*remove)(const char* path);

  /// Gives a file a second name. kUnsupported where the system has no such thing.
  FileResult (*link)(const char* path, const char* second);

  /// Renames in one step, in place of a file that may bear the new name.
  FileResult (*rename)(const char* from, const char* to);

  /// Gives two files each other's name in one step. kUnsupported where the system cannot.
  FileResult (*exchange)(const char* one, const char* other);

  /// Brings renames and removals in the directory of `path` to the device.
  FileResult (*flushDirectory)(const char* path);
};

/// The calls in force.
[[nodiscard]] FileCalls& fileCalls() noexcept;

/// The system's words for the last call of this thread, right after it failed.
[[nodiscard]] std::string lastFileFailure();

/// The byte between a directory and a name in a path.
[[nodiscard]] char directorySeparator() noexcept;

/// Closes a file that was only read, of which nothing can get lost.
struct FileCloser {
  void operator()(File* file) const { (void)fileCalls().close(file); }
};

using FileHandle = std::unique_ptr<File, FileCloser>;

/// Opens a file into a handle that closes it.
[[nodiscard]] inline FileResult openFile(const std::string& path, Links links, FileHandle& handle) {
  File* file = nullptr;
  const FileResult result = fileCalls().open(path.c_str(), links, &file);
  handle.reset(file);
  return result;
}

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_FILES_H
