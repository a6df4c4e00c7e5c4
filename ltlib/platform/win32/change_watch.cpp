#include "ltlib/platform/change_watch.h"

#include <cstddef>
#include <utility>

#include "ltlib/platform/win32/owned_handle.h"
#include "ltlib/platform/win32/system_words.h"

namespace LTLib::Platform {

// Of a folder or of a key; the other one is null.
struct ChangeWatch {
  HANDLE folder = nullptr;
  HKEY key = nullptr;
  HANDLE told = nullptr;  // the event that a change sets
  OVERLAPPED pending{};
  alignas(DWORD) char changes[16384] = {};
};

namespace {

std::wstring wideText(const std::string& text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(
      static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.c_str(), size, nullptr, 0)),
      L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.c_str(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

// Asks for the next change. The system keeps those that come between two askings.
bool arm(ChangeWatch& watch) noexcept {
  if (watch.key != nullptr) {
    return RegNotifyChangeKeyValue(watch.key, TRUE,
                                   REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET, watch.told,
                                   TRUE) == ERROR_SUCCESS;
  }
  watch.pending = {};
  watch.pending.hEvent = watch.told;
  return ReadDirectoryChangesW(watch.folder, watch.changes, sizeof watch.changes, FALSE,
                               FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_LAST_WRITE,
                               nullptr, &watch.pending, nullptr) != 0;
}

ChangeWatchHandle armed(ChangeWatchHandle watch, std::string& reason) {
  watch->told = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  if (watch->told == nullptr || !arm(*watch)) {
    reason = systemWords(GetLastError());
    watch.reset();
  }
  return watch;
}

}  // namespace

void ChangeWatchCloser::operator()(ChangeWatch* watch) const noexcept {
  if (watch->folder != nullptr) {
    DWORD ignored = 0;
    CancelIo(watch->folder);
    GetOverlappedResult(watch->folder, &watch->pending, &ignored, TRUE);
    CloseHandle(watch->folder);
  }
  if (watch->key != nullptr) {
    RegCloseKey(watch->key);
  }
  if (watch->told != nullptr) {
    CloseHandle(watch->told);
  }
  delete watch;
}

ChangeWatchHandle watchFolder(const std::string& path, std::string& reason) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE folder =
      CreateFileW(wideText(path).c_str(), FILE_LIST_DIRECTORY, kShareAll, nullptr, OPEN_EXISTING,
                  FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED, nullptr);
  if (folder == INVALID_HANDLE_VALUE) {
    reason = systemWords(GetLastError());
    return nullptr;
  }
  ChangeWatchHandle watch(new ChangeWatch);
  watch->folder = folder;
  return armed(std::move(watch), reason);
}

ChangeWatchHandle watchSystemKey(void* root, const std::string& path, std::string& reason) {
  HKEY key = nullptr;
  const LSTATUS opened =
      RegOpenKeyExW(static_cast<HKEY>(root), wideText(path).c_str(), 0, KEY_NOTIFY, &key);
  if (opened != ERROR_SUCCESS) {
    reason = systemWords(static_cast<DWORD>(opened));
    return nullptr;
  }
  ChangeWatchHandle watch(new ChangeWatch);
  watch->key = key;
  return armed(std::move(watch), reason);
}

bool awaitChange(ChangeWatch& watch) noexcept {
  return WaitForSingleObject(watch.told, INFINITE) == WAIT_OBJECT_0 && arm(watch);
}

}  // namespace LTLib::Platform
