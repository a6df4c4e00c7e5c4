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

// Ends the subscriptions of its topic when it goes.
struct Handler final : iqsEventHandler {
  Handler(ltDispatcher& from, iqs_ptr<iqsEventTopic> of) : dispatcher(from), topic(std::move(of)) {}
  ~Handler() override {
    s_ends += 'h';
    dispatcher.Remove(topic, {}, {});
  }
  ltDispatcher& dispatcher;
  const iqs_ptr<iqsEventTopic> topic;
};

// A dispatcher whose table can be filled.
struct Filled final : ltDispatcher {
  ~Filled() override { s_ends += 'd'; }
  void insert(int rank) {
    const iqs_ptr<iqsEventTopic> topic(new Topic(rank));
    const iqs_ptr<iqsEventHandler> handler(new Handler(*this, topic));
    m_entries.insert(new ltDispatcherEntry{topic, handler, {}});
  }
};

// A handler that goes may come back, by then to an empty table.
TEST(Dispatcher, RemoveTakesAllSubscriptionsOfATopicAndTheEndTakesTheRest) {
  const iqs_ptr<iqsEventTopic> two(new Topic(2));
  {
    Filled dispatcher;
    for (const int rank : {1, 2, 2, 3}) {
      dispatcher.insert(rank);
    }
    s_ends.clear();
    dispatcher.Remove(two, {}, {});
    dispatcher.Remove({}, {}, {});
    EXPECT_EQ(s_ends, "htht");
    EXPECT_EQ(two->m_refCount, 1);
  }
  EXPECT_EQ(s_ends, "hthtdhtht");
}

TEST(EventManager, OwnsItsDispatcherWhateverTheCount) {
  s_ends.clear();
  {
    ltEventManager<int> manager;
    auto* const first = new Filled;
    first->m_refCount = 2;
    manager.ReplaceDispatcher(first);
    manager.ReplaceDispatcher(first);
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
