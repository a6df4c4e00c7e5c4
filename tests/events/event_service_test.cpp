#include "ltlib/events/event_service.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/support/threads.h"

// The static analyser cannot follow atomic counts.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks)

namespace {

// A letter for each end of an object.
std::string s_ends;

struct Topic final : iqsEventTopic {
  explicit Topic(int rank) : m_rank(rank) {}
  ~Topic() override { s_ends += 't'; }
  std::int32_t Compare(const iqsEventTopic* other) const override {
    return m_rank - static_cast<const Topic*>(other)->m_rank;
  }

 private:
  int m_rank;
};

// Ends the subscriptions of its topic, if it has one, when it goes.
struct Handler final : iqsEventHandler {
  ~Handler() override {
    s_ends += 'h';
    if (topic) {
      dispatcher->Remove(topic, {}, {});
    }
  }
  ltDispatcher* dispatcher = nullptr;
  iqs_ptr<iqsEventTopic> topic;
};

struct Filter final : iqsEventFilter {
  ~Filter() override { s_ends += 'f'; }
};

ltDispatcherEntry entry(int rank) {
  return {iqs_ptr<iqsEventTopic>(new Topic(rank)), iqs_ptr<iqsEventHandler>(new Handler),
          iqs_ptr<iqsEventFilter>(new Filter)};
}

// A dispatcher whose table can be filled.
struct Filled final : ltDispatcher {
  ~Filled() override { s_ends += 'd'; }
  void insert(ltDispatcherEntry added) {
    m_entries.insert(new ltDispatcherEntry(std::move(added)));
  }
};

// A handler that goes may come back, by then to an empty table.
TEST(Dispatcher, RemoveTakesAllSubscriptionsOfATopicAndTheEndTakesTheRest) {
  const ltDispatcherEntry two = entry(2);
  {
    Filled dispatcher;
    dispatcher.Add(two.topic, two.handler, two.filter);
    dispatcher.Dispatch(iqs_const_ptr<iqsEvent>(new iqsEvent));
    auto* const leaving = new Handler;
    leaving->dispatcher = &dispatcher;
    leaving->topic = iqs_ptr<iqsEventTopic>(new Topic(1));
    dispatcher.insert({leaving->topic, iqs_ptr<iqsEventHandler>(leaving), {}});
    for (const int rank : {2, 2, 3}) {
      dispatcher.insert(entry(rank));
    }
    dispatcher.insert({});
    s_ends.clear();
    dispatcher.Remove(two.topic, {}, two.filter);
    EXPECT_EQ(s_ends, "fhtfht");
    EXPECT_EQ(two.topic->m_refCount, 1);
    dispatcher.Remove({}, two.handler, {});
    s_ends.clear();
  }
  EXPECT_EQ(s_ends, "dhtfht");
}

TEST(EventManager, OwnsItsDispatcherWhateverTheCount) {
  s_ends.clear();
  {
    ltEventManager<int> manager;
    auto* const first = new Filled;
    first->m_refCount = 2;
    manager.ReplaceDispatcher(first);
    manager.ReplaceDispatcher(first);
    EXPECT_EQ(manager.Dispatcher(), first);
    manager.ReplaceDispatcher(new Filled);
    EXPECT_EQ(s_ends, "d");
  }
  EXPECT_EQ(s_ends, "dd");
}

TEST(EventService, FirstCallersOfManyThreadsGetOneManager) {
  ltEventManager<ltEventService>* seen[8];
  LTLib::Testing::runTogether(8, [&](int thread) { seen[thread] = ltEventService::Instance(); });
  EXPECT_EQ(std::count(seen, seen + 8, ltEventService::Instance()), 8);
  EXPECT_NE(ltEventService::Instance()->Dispatcher(), nullptr);
}

}  // namespace

// NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)
