#include "ltlib/platform/change_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

namespace LTLib::Platform {

struct ChangeWatch {
  int descriptor;
};

namespace {

// Reading a file is no change, so that a watcher that looks does not wake itself.
constexpr std::uint32_t kChanges =
    IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr std::uint32_t kEnds = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;

}  // namespace

void ChangeWatchCloser::operator()(ChangeWatch* watch) const noexcept {
  ::close(watch->descriptor);
  delete watch;
}

ChangeWatchHandle watchFolder(const std::string& path, std::string& reason) {
  const int descriptor = ::inotify_init1(IN_CLOEXEC);
  if (descriptor < 0) {
    reason = std::strerror(errno);
    return nullptr;
  }
  ChangeWatchHandle watch(new ChangeWatch{descriptor});
  if (::inotify_add_watch(descriptor, path.c_str(),
                          kChanges | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR) < 0) {
    reason = std::strerror(errno);
    return nullptr;
  }
  return watch;
}

ChangeWatchHandle watchSystemKey(void* /*root*/, const std::string& /*path*/, std::string& reason) {
  reason = "this system has no registry of its own";
  return nullptr;
}

bool awaitChange(ChangeWatch& watch) noexcept {
  alignas(inotify_event) char events[16384];
  ssize_t size = 0;
  do {
    size = ::read(watch.descriptor, events, sizeof events);
  } while (size < 0 && errno == EINTR);
  for (ssize_t at = 0; at < size;) {
    inotify_event event{};
    std::memcpy(&event, events + at, sizeof event);
    if ((event.mask & kEnds) != 0) {
      return false;
    }
    at += static_cast<ssize_t>(sizeof event + event.len);
  }
  return size > 0;
}

}  // namespace LTLib::Platform
