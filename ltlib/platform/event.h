// An event between the threads of this process: open or closed, and threads that wait for open.
#ifndef LTLIB_PLATFORM_EVENT_H
#define LTLIB_PLATFORM_EVENT_H

namespace LTLib::Platform {

/// The event itself; only the platform's side knows its shape.
struct Event;

/// How an event closes again: by resetEvent alone, or by letting one waiter through.
enum class EventReset { kManual, kAutomatic };

/// Makes a closed event; null when the system refuses.
[[nodiscard]] Event* createEvent(EventReset reset) noexcept;

/// Opens the event. A manual-reset event lets all through until it is closed; an auto-reset event
/// lets exactly one waiter through, the present or the next, and is closed by that.
void setEvent(Event& event) noexcept;

/// Closes the event.
void resetEvent(Event& event) noexcept;

/// Waits without limit until the event lets this thread through.
void waitForEvent(Event& event) noexcept;

/// Frees the event. Requires: nobody waits for it. A null event is fine.
void destroyEvent(Event* event) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_EVENT_H
