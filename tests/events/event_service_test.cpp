#include "ltlib/events/event_service.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/threads.h"

// The static analyser cannot follow atomic counts.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks)

namespace {

// A letter for each end of an object, and for each comparison.
std::string s_calls;

struct Topic final : iqsEventTopic {
  explicit Topic(int rank) : m_rank(rank) {}
  ~Topic() override { s_calls += 't'; }
  std::int32_t Compare(const iqsEventTopic* other) const override {
    s_calls += 'c';
    return m_rank - static_cast<const Topic*>(other)->m_rank;
  }

 private:
  int m_rank;
};

struct Handler final : iqsEventHandler {
  ~Handler() override { s_calls += 'h'; }
};

struct Filter final : iqsEventFilter {
  ~Filter() override { s_calls += 'f'; }
};

ltDispatcherEntry entry(int rank) {
  return {iqs_ptr<iqsEventTopic>(new Topic(rank)), iqs_ptr<iqsEventHandler>(new Handler),
          iqs_ptr<iqsEventFilter>(new Filter)};
}

// A dispatcher whose table can be filled.
struct Filled final : ltDispatcher {
  ~Filled() override { s_calls += 'd'; }
  void insert(ltDispatcherEntry added) {
    m_entries.insert(new ltDispatcherEntry(std::move(added)));
  }
};

TEST(Dispatcher, AddAndDispatchAndRemoveLeaveEverythingAlone) {
  Filled dispatcher;
  const ltDispatcherEntry real = entry(1);
  s_calls.clear();
  const ltDispatcherEntry none;
  for (const ltDispatcherEntry* row : {&real, &none}) {
    dispatcher.Add(row->topic, row->handler, row->filter);
    dispatcher.Dispatch(iqs_const_ptr<iqsEvent>(new iqsEvent));
    dispatcher.Remove(row->topic, row->handler, row->filter);
  }
  EXPECT_EQ(real.topic->m_refCount, 1);
  EXPECT_EQ(real.handler->m_refCount, 1);
  EXPECT_EQ(real.filter->m_refCount, 1);
  EXPECT_EQ(s_calls, "");
}

TEST(Dispatcher, RemoveTakesAllSubscriptionsOfATopicAndTheEndTakesTheRest) {
  const ltDispatcherEntry two = entry(2);
  {
    Filled dispatcher;
    for (const int rank : {2, 1, 2, 3}) {
      dispatcher.insert(entry(rank));
    }
    dispatcher.insert({});
    s_calls.clear();
    dispatcher.Remove(two.topic, {}, two.filter);
    std::erase(s_calls, 'c');
    EXPECT_EQ(s_calls, "fhtfht");
    EXPECT_EQ(two.topic->m_refCount, 1);
    dispatcher.Remove({}, two.handler, {});
    s_calls.clear();
  }
  EXPECT_EQ(s_calls, "dfhtfht");
}

// Ends the subscriptions of its topic, its own among them, when it goes.
struct Leaving final : iqsEventHandler {
  Leaving(ltDispatcher& from, const iqs_ptr<iqsEventTopic>& about)
      : dispatcher(from), topic(about) {}
  ~Leaving() override {
    s_calls += 'l';
    dispatcher.Remove(topic, {}, {});
  }
  ltDispatcher& dispatcher;
  iqs_ptr<iqsEventTopic> topic;
};

TEST(Dispatcher, HandlersMayComeBackWhenItEnds) {
  {
    const ltDispatcherEntry one = entry(1);
    Filled dispatcher;
    dispatcher.insert(
        {one.topic, iqs_ptr<iqsEventHandler>(new Leaving(dispatcher, one.topic)), {}});
    dispatcher.insert({one.topic, iqs_ptr<iqsEventHandler>(new Handler), {}});
    dispatcher.insert(entry(2));
    s_calls.clear();
  }
  EXPECT_EQ(s_calls, "dlhfhtfht");
}

TEST(EventManager, OwnsItsDispatcherWhateverTheCount) {
  s_calls.clear();
  {
    ltEventManager<int> manager;
    auto* const first = new Filled;
    first->m_refCount = 2;
    manager.ReplaceDispatcher(first);
    manager.ReplaceDispatcher(first);
    EXPECT_EQ(manager.Dispatcher(), first);
    manager.ReplaceDispatcher(new Filled);
    EXPECT_EQ(s_calls, "d");
  }
  EXPECT_EQ(s_calls, "dd");
}

TEST(EventService, FirstCallersOfManyThreadsGetOneManager) {
  ltEventManager<ltEventService>* seen[8];
  LTLib::Testing::runTogether(8, [&](int thread) { seen[thread] = ltEventService::Instance(); });
  for (const auto* manager : seen) {
    EXPECT_EQ(manager, ltEventService::Instance());
  }
  EXPECT_EQ(seen[0]->Dispatcher()->m_refCount, 1);
  ltEventService a;
  const ltEventService b;
  EXPECT_EQ(&(a = b), &a);
  EXPECT_EQ(&(a = ltEventService()), &a);
}

}  // namespace

// NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)
