#include "ltlib/events/dispatcher.h"

#include <memory>
#include <vector>

iqsDispatcher::~iqsDispatcher() = default;

ltDispatcher::ltDispatcher() = default;

ltDispatcher::~ltDispatcher() {
  // Out of the table first, since the objects that go may come back here.
  decltype(m_entries) ended;
  ended.swap(m_entries);
  for (const ltDispatcherEntry* entry : ended) {
    delete entry;
  }
}

void ltDispatcher::Add(const iqs_ptr<iqsEventTopic>& /*topic*/,
                       const iqs_ptr<iqsEventHandler>& /*handler*/,
                       const iqs_ptr<iqsEventFilter>& /*filter*/) {}

void ltDispatcher::Dispatch(const iqs_const_ptr<iqsEvent>& /*event*/) const {}

void ltDispatcher::Remove(const iqs_ptr<iqsEventTopic>& topic,
                          const iqs_ptr<iqsEventHandler>& handler,
                          const iqs_ptr<iqsEventFilter>& filter) {
  // The order looks at topics alone, so that this finds whatever handlers and filters there are.
  ltDispatcherEntry searched{topic, handler, filter};
  const auto [first, last] = m_entries.equal_range(&searched);
  // Out of the table first, here too.
  const std::vector<std::unique_ptr<ltDispatcherEntry>> removed(first, last);
  m_entries.erase(first, last);
}

bool ltDispatcher::TopicOrder::operator()(const ltDispatcherEntry* a,
                                          const ltDispatcherEntry* b) const {
  if (!a->topic || !b->topic) {
    return !a->topic && b->topic;
  }
  return a->topic->Compare(b->topic.get()) < 0;
}
