// Changes of a file, or in the operating system's registry, as the system tells of them.
//
// From its opening on a watch misses nothing: a change that comes before the one ahead of it was taken
// is there to be taken. What changed is for the caller to find out, and several changes may be one.
//
// A watch belongs to the thread that opened it, with whose end the system may stop to tell.
#ifndef LTLIB_PLATFORM_CHANGE_WATCH_H
#define LTLIB_PLATFORM_CHANGE_WATCH_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace LTLib::Platform {

/// An open watch; only the platform's side knows its shape.
struct ChangeWatch;

struct ChangeWatchCloser {
  void operator()(ChangeWatch* watch) const noexcept;
};

using ChangeWatchHandle = std::unique_ptr<ChangeWatch, ChangeWatchCloser>;

/// Watches a file, which need not be there, in a folder, which must: whoever writes it, replaces it or
/// removes it. The pathname is narrow, as in files.h. Null where the system refuses; `reason` then
/// has its words.
[[nodiscard]] ChangeWatchHandle watchFile(const std::string& pathname, std::string& reason);

/// Watches a key of the operating system's registry and all below it; where it is not there, the
/// nearest key above it that is. `root` is a predefined handle, `path` narrow as in os_registry.h.
/// Null where there is no such registry, too.
[[nodiscard]] ChangeWatchHandle watchSystemKey(void* root, const std::string& path,
                                               std::string& reason);

/// What the system's own waits take, ready as long as there is a change to take: on POSIX a descriptor
/// of 3 or above to read from, on Windows the handle of an event.
[[nodiscard]] std::intptr_t readinessOf(const ChangeWatch& watch) noexcept;

/// Waits until there is a change to take. False when the time is up, and where a signal came.
[[nodiscard]] bool awaitChange(const ChangeWatch& watch, std::chrono::milliseconds limit) noexcept;

enum class TakenChange {
  kNone,
  kSome,  // there may be more to it than what was asked for, where the system does not tell it apart
  kNoMore,  // there is nothing to watch any more
};

/// Takes all changes so far, and waits for none.
[[nodiscard]] TakenChange takeChange(ChangeWatch& watch);

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_CHANGE_WATCH_H
