/// \file
/// \brief The process-wide meeting point of modules that publish and receive events.
///
/// Threads: Instance may be called from any thread; the manager itself is used by one thread at a
/// time.
///
/// Ownership: the service's manager lives to the end of the process. A manager owns its dispatcher.
#ifndef LTLIB_EVENTS_EVENT_SERVICE_H
#define LTLIB_EVENTS_EVENT_SERVICE_H

#include <atomic>
#include <memory>

#include "ltlib/events/dispatcher.h"
#include "ltlib/export.h"

/// Owns one dispatcher, which may be null. T tells the managers of different services apart.
template <class T>
class ltEventManager {
 public:
  /// Makes an ltDispatcher. Throws std::bad_alloc.
  ltEventManager() : m_dispatcher(new ltDispatcher) {}

  /// The dispatcher, borrowed: it is deleted with the manager or by its replacement, whatever its
  /// reference count says.
  iqsDispatcher* Dispatcher() const { return m_dispatcher.get(); }

  /// Takes over `dispatcher`, which may be null, in place of the present one, which is deleted.
  void ReplaceDispatcher(iqsDispatcher* dispatcher) {
    if (dispatcher != m_dispatcher.get()) {
      m_dispatcher.reset(dispatcher);
    }
  }

 private:
  std::unique_ptr<iqsDispatcher> m_dispatcher;
};

/// Gives the one manager of the process.
class LTLIB_EXPORT ltEventService {
 public:
  ltEventService() = default;
  ltEventService(const ltEventService&) = default;

  // There is nothing to assign.
  ltEventService& operator=(const ltEventService& other);
  ltEventService& operator=(ltEventService&& other) noexcept;

  /// The manager of the process, made by the first call. Throws std::bad_alloc; the next call then
  /// starts afresh.
  static ltEventManager<ltEventService>* Instance();

 private:
  static std::atomic<ltEventManager<ltEventService>*> s_Instance;
};

#endif  // LTLIB_EVENTS_EVENT_SERVICE_H
