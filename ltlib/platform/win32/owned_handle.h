// The system's handle in a block of its own type, for the contracts' opaque records.
#ifndef LTLIB_PLATFORM_WIN32_OWNED_HANDLE_H
#define LTLIB_PLATFORM_WIN32_OWNED_HANDLE_H

#include <windows.h>

#include <new>

namespace LTLib::Platform {

/// Puts a handle into a new record, whose first field it is. Null, with the handle closed, when
/// there is no memory for it; null for no handle.
template <class Record>
[[nodiscard]] Record* ownHandle(HANDLE handle) noexcept {
  if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
    return nullptr;
  }
  auto* record = new (std::nothrow) Record{handle};
  if (record == nullptr) {
    CloseHandle(handle);
  }
  return record;
}

/// Closes the handle and frees its record; a null record is fine. Whether the system agreed.
template <class Record>
bool disposeHandle(Record* record) noexcept {
  const bool closed = record == nullptr || CloseHandle(record->handle) != 0;
  delete record;
  return closed;
}

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_WIN32_OWNED_HANDLE_H
