#include "ltlib/platform/change_watch.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "ltlib/platform/linux/descriptors.h"

namespace LTLib::Platform {

struct ChangeWatch {
  int descriptor;
  std::string file;  // the name in its folder
};

namespace {

// Reading a file is no change, so that a watcher that looks does not wake itself.
constexpr std::uint32_t kChanges =
    IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr std::uint32_t kWatchEnds = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;

// What got lost may have been of any file.
TakenChange meaningOf(const inotify_event& event, const char* name, const std::string& file) {
  return (event.mask & kWatchEnds) != 0                     ? TakenChange::kNoMore
         : (event.mask & IN_Q_OVERFLOW) != 0                ? TakenChange::kSome
         : event.len != 0 && file == std::string_view(name) ? TakenChange::kSome
                                                            : TakenChange::kNone;
}

}  // namespace

void ChangeWatchCloser::operator()(ChangeWatch* watch) const noexcept {
  ::close(watch->descriptor);
  delete watch;
}

ChangeWatchHandle watchFile(const std::string& pathname, std::string& reason) {
  const std::size_t end = pathname.rfind('/') + 1;
  const std::string folder = end != 0 ? pathname.substr(0, end) : ".";
  auto made = std::make_unique<ChangeWatch>(ChangeWatch{-1, pathname.substr(end)});
  made->descriptor = aboveStandardStreams(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  if (made->descriptor < 0) {
    reason = std::strerror(errno);
    return nullptr;
  }
  ChangeWatchHandle watch(made.release());
  if (::inotify_add_watch(watch->descriptor, folder.c_str(),
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

std::intptr_t readinessOf(const ChangeWatch& watch) noexcept {
  return watch.descriptor;
}

bool awaitChange(const ChangeWatch& watch, std::chrono::milliseconds limit) noexcept {
  pollfd readiness{watch.descriptor, POLLIN, 0};
  const auto most =
      std::min<std::chrono::milliseconds::rep>(limit.count(), std::numeric_limits<int>::max());
  return ::poll(&readiness, 1, static_cast<int>(most)) > 0;
}

TakenChange takeChange(ChangeWatch& watch) {
  TakenChange taken = TakenChange::kNone;
  alignas(inotify_event) char events[4096];
  for (;;) {
    const ssize_t size = ::read(watch.descriptor, events, sizeof events);
    if (size < 0 && errno == EINTR) {
      continue;
    }
    if (size <= 0) {
      return size < 0 && errno == EAGAIN ? taken : TakenChange::kNoMore;
    }
    for (ssize_t at = 0; at < size;) {
      inotify_event event{};
      std::memcpy(&event, events + at, sizeof event);
      taken = std::max(taken, meaningOf(event, events + at + sizeof event, watch.file));
      at += static_cast<ssize_t>(sizeof event + event.len);
    }
  }
}

}  // namespace LTLib::Platform
