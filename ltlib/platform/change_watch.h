// Waiting for changes in a folder, or in the operating system's registry, as the system tells of them;
// no part of the shared library.
//
// From its opening on a watch misses nothing: a change that comes between two waits ends the second one
// at once. What changed is for the caller to find out, and several changes may end one wait.
#ifndef LTLIB_PLATFORM_CHANGE_WATCH_H
#define LTLIB_PLATFORM_CHANGE_WATCH_H

#include <memory>
#include <string>

namespace LTLib::Platform {

/// An open watch; only the platform's side knows its shape.
struct ChangeWatch;

struct ChangeWatchCloser {
  void operator()(ChangeWatch* watch) const noexcept;
};

using ChangeWatchHandle = std::unique_ptr<ChangeWatch, ChangeWatchCloser>;

/// Watches the names and the contents of the files that lie in a folder, given as a path in UTF-8. Null
/// where the system refuses; `reason` then has its words.
[[nodiscard]] ChangeWatchHandle watchFolder(const std::string& path, std::string& reason);

/// Watches a key of the operating system's registry and all below it. `root` is a predefined handle,
/// `path` UTF-8. Null where there is no such registry, too.
[[nodiscard]] ChangeWatchHandle watchSystemKey(void* root, const std::string& path,
                                               std::string& reason);

/// Waits until something changes, without limit. False where there is nothing to watch any more.
[[nodiscard]] bool awaitChange(ChangeWatch& watch) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_CHANGE_WATCH_H
