#include "ltlib/platform/change_watch.h"

#include <algorithm>
#include <utility>

#include "ltlib/platform/win32/owned_handle.h"
#include "ltlib/platform/win32/system_words.h"

namespace LTLib::Platform {

// Of a folder or of a key; the other one is null.
struct ChangeWatch {
  HANDLE folder = nullptr;
  HKEY root = nullptr;
  std::string path;
  HKEY key = nullptr;     // the nearest one that is there
  HKEY parent = nullptr;  // of that one
  HANDLE told = nullptr;  // the event that a change sets, and that stays set until it is taken
  OVERLAPPED pending{};
  alignas(DWORD) char changes[16384] = {};
};

namespace {

std::string pathAbove(const std::string& path) {
  return path.substr(0, path.find('\\') != std::string::npos ? path.rfind('\\') : 0);
}

// Gives the path of the one that is open.
std::string openNearestKey(ChangeWatch& watch, LSTATUS& opened) {
  std::string path = watch.path;
  for (;;) {
    opened = RegOpenKeyExA(watch.root, path.c_str(), 0, KEY_NOTIFY, &watch.key);
    if (opened != ERROR_FILE_NOT_FOUND || path.empty()) {
      return path;
    }
    path = pathAbove(path);
  }
}

void releaseKey(HKEY& key) noexcept {
  if (key != nullptr) {
    RegCloseKey(std::exchange(key, nullptr));
  }
}

LSTATUS askOfKey(ChangeWatch& watch, HKEY key, bool below, DWORD changes) {
  return RegNotifyChangeKeyValue(key, below ? TRUE : FALSE, changes, watch.told, TRUE);
}

// That a key goes is a change of its parent, which not every system tells of the key itself. Closing
// one sets the event.
LSTATUS armNearestKey(ChangeWatch& watch) {
  releaseKey(watch.key);
  releaseKey(watch.parent);
  ResetEvent(watch.told);
  LSTATUS done = ERROR_SUCCESS;
  const std::string path = openNearestKey(watch, done);
  if (done == ERROR_SUCCESS && !path.empty() &&
      RegOpenKeyExA(watch.root, pathAbove(path).c_str(), 0, KEY_NOTIFY, &watch.parent) ==
          ERROR_SUCCESS) {
    done = askOfKey(watch, watch.parent, false, REG_NOTIFY_CHANGE_NAME);
  }
  return done != ERROR_SUCCESS ? done
                               : askOfKey(watch, watch.key, true,
                                          REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET);
}

// Each time anew, since the key may have come or gone, even meanwhile.
LSTATUS armKey(ChangeWatch& watch) {
  LSTATUS done = ERROR_SUCCESS;
  do {
    done = armNearestKey(watch);
  } while (done == ERROR_KEY_DELETED);
  return done;
}

// The system keeps the changes that come between two askings.
LSTATUS armFolder(ChangeWatch& watch) {
  ResetEvent(watch.told);
  watch.pending = {};
  watch.pending.hEvent = watch.told;
  const bool asked =
      ReadDirectoryChangesW(watch.folder, watch.changes, sizeof watch.changes, FALSE,
                            FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_LAST_WRITE, nullptr,
                            &watch.pending, nullptr) != 0;
  return asked ? ERROR_SUCCESS : static_cast<LSTATUS>(GetLastError());
}

LSTATUS arm(ChangeWatch& watch) {
  return watch.folder != nullptr ? armFolder(watch) : armKey(watch);
}

ChangeWatchHandle armed(ChangeWatchHandle watch, std::string& reason) {
  watch->told = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const LSTATUS asked = watch->told != nullptr ? arm(*watch) : static_cast<LSTATUS>(GetLastError());
  if (asked != ERROR_SUCCESS) {
    reason = systemWords(static_cast<DWORD>(asked));
    watch.reset();
  }
  return watch;
}

}  // namespace

void ChangeWatchCloser::operator()(ChangeWatch* watch) const noexcept {
  if (watch->folder != nullptr) {
    DWORD ignored = 0;
    if (CancelIo(watch->folder) != 0 && watch->pending.hEvent != nullptr) {
      GetOverlappedResult(watch->folder, &watch->pending, &ignored, TRUE);
    }
    CloseHandle(watch->folder);
  }
  releaseKey(watch->key);
  releaseKey(watch->parent);
  if (watch->told != nullptr) {
    CloseHandle(watch->told);
  }
  delete watch;
}

ChangeWatchHandle watchFile(const std::string& pathname, std::string& reason) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const std::size_t end = pathname.find_last_of("\\/:") + 1;
  const std::string path = end != 0 ? pathname.substr(0, end) : ".";
  ChangeWatchHandle watch(new ChangeWatch);
  const HANDLE folder =
      CreateFileA(path.c_str(), FILE_LIST_DIRECTORY, kShareAll, nullptr, OPEN_EXISTING,
                  FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED, nullptr);
  if (folder == INVALID_HANDLE_VALUE) {
    reason = systemWords(GetLastError());
    return nullptr;
  }
  watch->folder = folder;
  return armed(std::move(watch), reason);
}

ChangeWatchHandle watchSystemKey(void* root, const std::string& path, std::string& reason) {
  ChangeWatchHandle watch(new ChangeWatch);
  watch->root = static_cast<HKEY>(root);
  watch->path = path;
  return armed(std::move(watch), reason);
}

std::intptr_t readinessOf(const ChangeWatch& watch) noexcept {
  return reinterpret_cast<std::intptr_t>(watch.told);
}

bool awaitChange(const ChangeWatch& watch, std::chrono::milliseconds limit) noexcept {
  const auto most = std::clamp<std::chrono::milliseconds::rep>(limit.count(), 0, INFINITE - 1);
  return WaitForSingleObject(watch.told, static_cast<DWORD>(most)) == WAIT_OBJECT_0;
}

// Which file it was is not looked at: the names may be short ones, and the buffer may have run over.
TakenChange takeChange(ChangeWatch& watch) {
  if (WaitForSingleObject(watch.told, 0) != WAIT_OBJECT_0) {
    return TakenChange::kNone;
  }
  return arm(watch) == ERROR_SUCCESS ? TakenChange::kSome : TakenChange::kNoMore;
}

}  // namespace LTLib::Platform
