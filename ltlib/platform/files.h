// Files as the store needs them, behind one table of calls.
//
// All calls take narrow pathnames of the system, throw nothing and report by their results. The
// table is process-wide; a test puts its own functions in to make any one call fail. Changing it
// while another thread works with files is not safe.
#ifndef LTLIB_PLATFORM_FILES_H
#define LTLIB_PLATFORM_FILES_H

#include <cstddef>

namespace LTLib::Platform {

/// An open file; only the platform's side knows its shape.
struct File;

enum class FileResult {
  kDone,
  kAbsent,       // there is no such file
  kUnsupported,  // this file system cannot do that
  kFailed,
};

/// What a file's permissions are on this system; kept as it is and given to another file.
using FilePermissions = unsigned int;

/// What a pathname leads to.
struct FileStatus {
  bool regular = false;  // a file proper: no folder, no device
  FilePermissions permissions = 0;
};

struct FileCalls {
  /// Opens a file for reading in the system's text mode, denying nothing to others. Null when
  /// that fails or the path names no file, as with a folder.
  File* (*openForReading)(const char* path);

  /// Opens a file for writing in the system's text mode, emptied or made new. With `permissions`
  /// the file has them before its first byte is written. Null when that fails.
  File* (*openForWriting)(const char* path, const FilePermissions* permissions);

  /// Reads up to `capacity` bytes; `taken` is 0 at the end of the file alone.
  FileResult (*read)(File& file, char* buffer, std::size_t capacity, std::size_t* taken);

  /// Writes all the bytes or fails.
  FileResult (*write)(File& file, const char* bytes, std::size_t count);

  /// Brings what was written to the device.
  FileResult (*flush)(File& file);

  /// Closes and frees the file, whatever the result.
  FileResult (*close)(File* file);

  /// Whether anything of that name is there, and what.
  FileResult (*status)(const char* path, FileStatus* found);

  /// Removes a file, never a folder.
  FileResult (*remove)(const char* path);

  /// Gives a file a second name. kUnsupported where the system has no such thing.
  FileResult (*link)(const char* path, const char* second);

  /// Renames in one step, in place of a file that may bear the new name.
  FileResult (*rename)(const char* from, const char* to);

  /// Brings renames and removals in the directory of `path` to the device.
  FileResult (*flushDirectory)(const char* path);
};

/// The calls in force.
[[nodiscard]] FileCalls& fileCalls() noexcept;

/// The byte between a directory and a name in a path.
[[nodiscard]] char directorySeparator() noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_FILES_H
