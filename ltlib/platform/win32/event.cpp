#include "ltlib/platform/event.h"

#include "ltlib/platform/win32/owned_handle.h"

namespace LTLib::Platform {

struct Event {
  HANDLE handle;
};

Event* createEvent(EventReset reset) noexcept {
  return ownHandle<Event>(CreateEventA(nullptr, reset == EventReset::kManual, FALSE, nullptr));
}

void setEvent(Event& event) noexcept {
  SetEvent(event.handle);
}

void resetEvent(Event& event) noexcept {
  ResetEvent(event.handle);
}

void waitForEvent(Event& event) noexcept {
  WaitForSingleObject(event.handle, INFINITE);
}

void destroyEvent(Event* event) noexcept {
  disposeHandle(event);
}

}  // namespace LTLib::Platform
