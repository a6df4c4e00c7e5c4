/// \file
/// \brief What passes through the event service: the shapes that modules derive their own types
/// from.
#ifndef LTLIB_EVENTS_EVENT_TYPES_H
#define LTLIB_EVENTS_EVENT_TYPES_H

#include <cstdint>

#include "ltlib/component/shared_object.h"

/// Something that happened.
struct iqsEvent : iqsSharedObject {};

/// What an event is about.
struct iqsEventTopic : iqsSharedObject {
  /// Negative when this topic stands before `other`, positive when behind it, 0 when the two are
  /// the same. Has to be a total order over the topics of one dispatcher.
  virtual std::int32_t Compare(const iqsEventTopic* other) const = 0;
};

/// Who receives events.
struct iqsEventHandler : iqsSharedObject {};

/// Which of a topic's events a handler receives.
struct iqsEventFilter : iqsSharedObject {};

#endif  // LTLIB_EVENTS_EVENT_TYPES_H
