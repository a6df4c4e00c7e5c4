/// \file
/// \brief The interface by which handlers subscribe to topics and events are delivered, and the
/// library's implementation of it.
///
/// Threads: a dispatcher is used by one thread at a time; the references it counts may be shared.
///
/// Ownership: a dispatcher adds its own references to what it keeps. It is itself a shared object
/// with one reference at first.
#ifndef LTLIB_EVENTS_DISPATCHER_H
#define LTLIB_EVENTS_DISPATCHER_H

#include <set>

#include "ltlib/component/shared_object.h"
#include "ltlib/events/event_types.h"
#include "ltlib/export.h"

/// What carries events from those who publish to those who subscribed.
struct LTLIB_EXPORT iqsDispatcher : iqsSharedObject {
  ~iqsDispatcher() override;

  /// Subscribes a handler to the events of a topic that pass a filter.
  virtual void Add(const iqs_ptr<iqsEventTopic>& topic, const iqs_ptr<iqsEventHandler>& handler,
                   const iqs_ptr<iqsEventFilter>& filter) = 0;

  /// Delivers an event.
  virtual void Dispatch(const iqs_const_ptr<iqsEvent>& event) const = 0;

  /// Ends subscriptions.
  virtual void Remove(const iqs_ptr<iqsEventTopic>& topic, const iqs_ptr<iqsEventHandler>& handler,
                      const iqs_ptr<iqsEventFilter>& filter) = 0;
};

/// One subscription.
struct ltDispatcherEntry {
  iqs_ptr<iqsEventTopic> topic;
  iqs_ptr<iqsEventHandler> handler;
  iqs_ptr<iqsEventFilter> filter;
};

/// Holds the table of subscriptions, ordered by topic. Adding and dispatching do nothing: a derived
/// class decides what they mean and fills the table.
class LTLIB_EXPORT ltDispatcher : public iqsDispatcher {
 public:
  ltDispatcher();

  /// Releases every subscription in the order of the table: filter, handler, topic. Those that go
  /// may still call Remove, which finds an empty table.
  ~ltDispatcher() override;

  void Add(const iqs_ptr<iqsEventTopic>& topic, const iqs_ptr<iqsEventHandler>& handler,
           const iqs_ptr<iqsEventFilter>& filter) override;
  void Dispatch(const iqs_const_ptr<iqsEvent>& event) const override;

  /// Ends all subscriptions of the topic, whatever their handlers and filters.
  void Remove(const iqs_ptr<iqsEventTopic>& topic, const iqs_ptr<iqsEventHandler>& handler,
              const iqs_ptr<iqsEventFilter>& filter) override;

 protected:
  /// Orders by Compare; a null topic stands before all others.
  struct TopicOrder {
    LTLIB_EXPORT bool operator()(const ltDispatcherEntry* a, const ltDispatcherEntry* b) const;
  };

  std::multiset<ltDispatcherEntry*, TopicOrder> m_entries;  // made by new, owned
};

#endif  // LTLIB_EVENTS_DISPATCHER_H
