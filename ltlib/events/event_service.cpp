#include "ltlib/events/event_service.h"

constinit std::atomic<ltEventManager<ltEventService>*> ltEventService::s_Instance{nullptr};

ltEventService& ltEventService::operator=(const ltEventService& /*other*/) {
  return *this;
}

ltEventService& ltEventService::operator=(ltEventService&& /*other*/) noexcept {
  return *this;
}

// First callers may meet here: the manager that is stored first serves all of them, and the
// others go.
ltEventManager<ltEventService>* ltEventService::Instance() {
  ltEventManager<ltEventService>* present = s_Instance;
  if (present != nullptr) {
    return present;
  }
  auto made = std::make_unique<ltEventManager<ltEventService>>();
  return s_Instance.compare_exchange_strong(present, made.get()) ? made.release() : present;
}
