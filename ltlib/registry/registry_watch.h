/// \file
/// \brief Being told that a store file, or a key of the operating system's registry, has changed.
///
/// The system tells it; no thread runs for it, and nothing is looked at meanwhile. A program has the
/// watch's handle among those that its own loop waits for, and takes the changes when it is ready. Key
/// by key that is what LTLib::Changes of ltlib/settings.h does.
///
/// Threads: a watch belongs to the thread that made it, and ends with it. It is of no use in the child
/// of a fork.
///
/// Ownership: the watch owns what its handle names, which nobody else reads from, sets or closes.
///
/// Failure: QSException with the system's words.
#ifndef LTLIB_REGISTRY_REGISTRY_WATCH_H
#define LTLIB_REGISTRY_REGISTRY_WATCH_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "ltlib/export.h"
#include "ltlib/registry/registry_manager.h"

namespace LTLib {

/// From its making on it misses no change; several may come as one.
class LTLIB_EXPORT RegistryWatch {
 public:
  /// Watches a store file, which need not be there yet; its folder must be. A link is followed once.
  [[nodiscard]] static RegistryWatch ofStore(const std::string& pathname);

  /// Watches a key of the operating system's registry and all below it, whether or not it is there
  /// yet; other keys may make it ready, too. Throws where the system has no registry.
  [[nodiscard]] static RegistryWatch ofSystemKey(enumRegRoot root, const std::string& path);

  ~RegistryWatch();
  RegistryWatch(RegistryWatch&& other) noexcept;
  RegistryWatch& operator=(RegistryWatch&& other) noexcept;

  /// What the system's waits take, one and the same for the life of the watch, and ready as long as
  /// there may be a change to take: on POSIX a descriptor to read from, as for poll; on Windows the
  /// HANDLE of an event, as for WaitForMultipleObjects.
  [[nodiscard]] std::intptr_t handle() const noexcept;

  /// Waits until it is ready, for programs without a loop. False when the time is up or a signal
  /// came.
  [[nodiscard]] bool wait(std::chrono::milliseconds limit) const noexcept;

  /// Takes the changes so far: whether there were any. Does not wait. Throws where there is nothing to
  /// watch any more, as the store's folder has gone; it is never ready again then.
  [[nodiscard]] bool take();

 private:
  struct Open;
  explicit RegistryWatch(std::unique_ptr<Open> open) noexcept;

  std::unique_ptr<Open> m_open;
};

}  // namespace LTLib

#endif  // LTLIB_REGISTRY_REGISTRY_WATCH_H
