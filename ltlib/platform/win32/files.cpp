#include "ltlib/platform/files.h"

#include <sys/stat.h>

#include <cstring>

#include "ltlib/platform/win32/owned_handle.h"

namespace LTLib::Platform {

// Text mode is done here and not by the C runtime, whose reading ends at the first Ctrl-Z: line
// ends are CR LF in the file, every other byte stands for itself.
struct File {
  HANDLE handle;
  bool ended = false;
  std::size_t at = 0;
  std::size_t end = 0;
  char raw[16384] = {};
};

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

FileResult resultOf(BOOL answer) {
  if (answer != 0) {
    return FileResult::kDone;
  }
  switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return FileResult::kAbsent;
    case ERROR_INVALID_FUNCTION:
    case ERROR_NOT_SUPPORTED:
    case ERROR_CALL_NOT_IMPLEMENTED:
    case ERROR_TOO_MANY_LINKS:
      return FileResult::kUnsupported;
    default:
      return FileResult::kFailed;
  }
}

File* openForReading(const char* path) {
  return ownHandle<File>(CreateFileA(path, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Nothing can take the place of a read-only file, and one of one's own could not be removed again.
File* openForWriting(const char* path, const FilePermissions* permissions) {
  if (permissions != nullptr && (*permissions & _S_IWRITE) == 0) {
    return nullptr;
  }
  return ownHandle<File>(CreateFileA(path, GENERIC_WRITE, kShareAll, nullptr, CREATE_ALWAYS,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool lastByteWaits(const File& file) {
  return file.at + 1 == file.end && file.raw[file.at] == '\r' && !file.ended;
}

// Takes the next piece in, behind a carriage return whose line feed may be the first byte of it.
bool refill(File& file) {
  const std::size_t kept = file.end - file.at;
  std::memmove(file.raw, file.raw + file.at, kept);
  DWORD count = 0;
  const bool read = ReadFile(file.handle, file.raw + kept,
                             static_cast<DWORD>(sizeof file.raw - kept), &count, nullptr) != 0;
  file.at = 0;
  file.end = kept + count;
  file.ended = count == 0;
  return read || GetLastError() == ERROR_BROKEN_PIPE;
}

std::size_t translate(File& file, char* buffer, std::size_t capacity) {
  std::size_t count = 0;
  while (count < capacity && file.at < file.end && !lastByteWaits(file)) {
    const bool lineEnd =
        file.raw[file.at] == '\r' && file.at + 1 < file.end && file.raw[file.at + 1] == '\n';
    file.at += lineEnd ? 1 : 0;
    buffer[count++] = file.raw[file.at++];
  }
  return count;
}

FileResult read(File& file, char* buffer, std::size_t capacity, std::size_t* taken) {
  *taken = translate(file, buffer, capacity);
  while (*taken == 0 && capacity > 0 && !file.ended) {
    if (!refill(file)) {
      return FileResult::kFailed;
    }
    *taken = translate(file, buffer, capacity);
  }
  return FileResult::kDone;
}

bool writeRaw(HANDLE handle, const char* bytes, std::size_t count) {
  DWORD written = 0;
  return count == 0 ||
         (WriteFile(handle, bytes, static_cast<DWORD>(count), &written, nullptr) != 0 &&
          written == count);
}

FileResult write(File& file, const char* bytes, std::size_t count) {
  char* const raw = file.raw;
  std::size_t held = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (held + 2 > sizeof file.raw) {
      if (!writeRaw(file.handle, raw, held)) {
        return FileResult::kFailed;
      }
      held = 0;
    }
    if (bytes[i] == '\n') {
      raw[held++] = '\r';
    }
    raw[held++] = bytes[i];
  }
  return writeRaw(file.handle, raw, held) ? FileResult::kDone : FileResult::kFailed;
}

// Devices have nothing to bring anywhere and say so.
FileResult flush(File& file) {
  const bool flushed =
      FlushFileBuffers(file.handle) != 0 || GetFileType(file.handle) != FILE_TYPE_DISK;
  return flushed ? FileResult::kDone : FileResult::kFailed;
}

FileResult close(File* file) {
  return disposeHandle(file) ? FileResult::kDone : FileResult::kFailed;
}

FileResult status(const char* path, FileStatus* found) {
  struct _stat64i32 seen {};
  if (_stat64i32(path, &seen) != 0) {
    return errno == ENOENT ? FileResult::kAbsent : FileResult::kFailed;
  }
  found->regular = (seen.st_mode & _S_IFMT) == _S_IFREG;
  found->permissions = seen.st_mode & (_S_IREAD | _S_IWRITE);
  return FileResult::kDone;
}

FileResult remove(const char* path) {
  return resultOf(DeleteFileA(path));
}

FileResult link(const char* path, const char* second) {
  return resultOf(CreateHardLinkA(second, path, nullptr));
}

FileResult rename(const char* from, const char* to) {
  return resultOf(MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
}

// Renames are written through by themselves.
FileResult flushDirectory(const char*) {
  return FileResult::kUnsupported;
}

}  // namespace

FileCalls& fileCalls() noexcept {
  static FileCalls s_calls{openForReading, openForWriting, read, write,  flush,         close,
                           status,         remove,         link, rename, flushDirectory};
  return s_calls;
}

char directorySeparator() noexcept {
  return '\\';
}

}  // namespace LTLib::Platform
