#include "ltlib/platform/files.h"

#include <cstring>

#include "ltlib/platform/lock_wait.h"
#include "ltlib/platform/win32/owned_handle.h"
#include "ltlib/platform/win32/system_words.h"

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

// Whatever is open here, others may read, replace and remove, as they may on other systems.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

FileResult resultOf(BOOL answer) {
  if (answer != 0) {
    return FileResult::kDone;
  }
  switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return FileResult::kAbsent;
    // What file systems without links say, and those where a file has as many as it can have.
    case ERROR_INVALID_FUNCTION:
    case ERROR_NOT_SUPPORTED:
    case ERROR_CALL_NOT_IMPLEMENTED:
    case ERROR_TOO_MANY_LINKS:
      return FileResult::kUnsupported;
    default:
      return FileResult::kFailed;
  }
}

FileResult wrap(HANDLE handle, File** file) {
  *file = ownHandle<File>(handle);
  if (*file == nullptr && handle != INVALID_HANDLE_VALUE) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  }
  return resultOf(*file != nullptr ? TRUE : FALSE);
}

// Links need a right that few have here, and a save replaces one as it replaces a file.
FileResult resolve(const char* path, std::string* target) {
  *target = path;
  return FileResult::kDone;
}

FileResult open(const char* path, Links, File** file) {
  const HANDLE handle = CreateFileA(path, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  // Names such as CON and NUL open as devices, in any folder.
  if (handle != INVALID_HANDLE_VALUE && GetFileType(handle) != FILE_TYPE_DISK) {
    CloseHandle(handle);
    SetLastError(ERROR_INVALID_NAME);
    *file = nullptr;
    return FileResult::kFailed;
  }
  return wrap(handle, file);
}

FileResult createForAll(const char* path, File** file) {
  return wrap(CreateFileA(path, GENERIC_WRITE, kShareAll, nullptr, CREATE_NEW,
                          FILE_ATTRIBUTE_NORMAL, nullptr),
              file);
}

bool isReadOnly(const char* path) {
  const DWORD attributes = GetFileAttributesA(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

// Nothing can take the place of a read-only file.
FileResult create(const char* path, const char* like, File** file) {
  if (like != nullptr && isReadOnly(like)) {
    SetLastError(ERROR_ACCESS_DENIED);
    *file = nullptr;
    return FileResult::kFailed;
  }
  return createForAll(path, file);
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
  // A pipe whose writer has gone has ended.
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

// A byte far behind any end of the file, since what is locked here nobody else can read.
BOOL lockNow(HANDLE handle, DWORD flags) {
  OVERLAPPED place{};
  place.OffsetHigh = 0x40000000;
  return LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | flags, 0, 1, 0, &place);
}

// A wait for a file's lock has no end of its own.
BOOL lockWithin(HANDLE handle, std::chrono::milliseconds limit) {
  constexpr DWORD kPause = 10;
  const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(limit.count());
  for (;;) {
    if (lockNow(handle, LOCKFILE_FAIL_IMMEDIATELY) != 0) {
      return TRUE;
    }
    const bool held = GetLastError() == ERROR_LOCK_VIOLATION || GetLastError() == ERROR_IO_PENDING;
    if (!held || GetTickCount64() >= end) {
      SetLastError(held ? ERROR_TIMEOUT : GetLastError());
      return FALSE;
    }
    Sleep(kPause);
  }
}

FileResult lock(File& file) {
  const auto limit = lockWaitLimit();
  return resultOf(limit ? lockWithin(file.handle, *limit) : lockNow(file.handle, 0));
}

FileResult tell(HANDLE handle, FileStatus* found) {
  BY_HANDLE_FILE_INFORMATION seen{};
  if (GetFileInformationByHandle(handle, &seen) == 0) {
    return resultOf(FALSE);
  }
  const std::uint64_t number = std::uint64_t{seen.nFileIndexHigh} << 32 | seen.nFileIndexLow;
  *found = {(seen.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0,
            {seen.dwVolumeSerialNumber, number}};
  return FileResult::kDone;
}

FileResult status(const char* path, FileStatus* found) {
  // Without the backup flag no folder would open, and without the other one a link's target would.
  const HANDLE handle =
      CreateFileA(path, FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                  FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    return resultOf(FALSE);
  }
  const FileResult result = tell(handle, found);
  CloseHandle(handle);
  return result;
}

FileResult statusOf(File& file, FileStatus* found) {
  return tell(file.handle, found);
}

// A read-only mark guards a store; it must not keep the files in that a save leaves beside it.
bool dropReadOnly(const char* path) {
  return GetLastError() == ERROR_ACCESS_DENIED && isReadOnly(path) &&
         SetFileAttributesA(path, FILE_ATTRIBUTE_NORMAL) != 0;
}

FileResult remove(const char* path) {
  return resultOf(DeleteFileA(path) != 0 || (dropReadOnly(path) && DeleteFileA(path) != 0));
}

FileResult rename(const char* from, const char* to) {
  const auto move = [&] {
    return MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
  };
  return resultOf(move() || (dropReadOnly(to) && move()));
}

// The system knows no such step.
FileResult exchange(const char*, const char*) {
  return FileResult::kUnsupported;
}

FileResult link(const char* path, const char* second) {
  return resultOf(CreateHardLinkA(second, path, nullptr));
}

// Renames are written through by themselves.
FileResult flushDirectory(const char*) {
  return FileResult::kUnsupported;
}

}  // namespace

FileCalls& fileCalls() noexcept {
  static constinit FileCalls s_calls{resolve, open,   create,   createForAll,  read,     write,
                                     flush,   lock,   close,    status,        statusOf, remove,
                                     link,    rename, exchange, flushDirectory};
  return s_calls;
}

std::string lastFileFailure() {
  return systemWords(GetLastError());
}

char directorySeparator() noexcept {
  return '\\';
}

}  // namespace LTLib::Platform
