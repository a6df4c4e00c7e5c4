#include "ltlib/events/event_service.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/support/latch.h"

// The static analyser cannot follow atomic counts.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks)

namespace {

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
class Filled : public ltDispatcher {
 public:
  ~Filled() override = default;
  void insert(ltDispatcherEntry added) {
    m_entries.insert(new ltDispatcherEntry(std::move(added)));
  }
  std::size_t size() const { return m_entries.size(); }
};

TEST(Dispatcher, AddAndDispatchAndRemoveLeaveEverythingAlone) {
  Filled dispatcher;
  EXPECT_EQ(dispatcher.m_refCount, 1);
  const ltDispatcherEntry real = entry(1);
  const iqs_const_ptr<iqsEvent> event(new iqsEvent);
  s_calls.clear();
  const ltDispatcherEntry partly[] = {real, {}, {real.topic, {}, {}}, {{}, real.handler, {}}};
  for (const ltDispatcherEntry& row : partly) {
    dispatcher.Add(row.topic, row.handler, row.filter);
    dispatcher.Dispatch(event);
    dispatcher.Remove(row.topic, row.handler, row.filter);
  }
  EXPECT_EQ(dispatcher.size(), 0u);
  EXPECT_EQ(real.topic->m_refCount, 3);
  EXPECT_EQ(real.handler->m_refCount, 3);
  EXPECT_EQ(real.filter->m_refCount, 2);
  EXPECT_EQ(s_calls, "");
}

TEST(Dispatcher, RemoveTakesAllSubscriptionsOfATopic) {
  Filled dispatcher;
  for (const int rank : {2, 1, 2, 3}) {
    dispatcher.insert(entry(rank));
  }
  dispatcher.insert({});
  ltDispatcherEntry removed = entry(2);
  s_calls.clear();
  dispatcher.Remove(removed.topic, {}, removed.filter);
  std::erase(s_calls, 'c');
  EXPECT_EQ(s_calls, "fhtfht");
  EXPECT_EQ(dispatcher.size(), 3u);
  EXPECT_EQ(removed.topic->m_refCount, 1);
  EXPECT_EQ(removed.filter->m_refCount, 1);
  dispatcher.Remove({}, removed.handler, {});
  EXPECT_EQ(dispatcher.size(), 2u);
}

TEST(Dispatcher, EndReleasesFilterHandlerTopicOfEachEntry) {
  {
    Filled dispatcher;
    dispatcher.insert(entry(1));
    dispatcher.insert(entry(2));
    s_calls.clear();
  }
  EXPECT_EQ(s_calls, "fhtfht");
}

TEST(EventManager, OwnsItsDispatcherWhateverTheCount) {
  struct Noted final : ltDispatcher {
    ~Noted() override { s_calls += 'd'; }
  };
  s_calls.clear();
  {
    ltEventManager<int> manager;
    EXPECT_NE(dynamic_cast<ltDispatcher*>(manager.Dispatcher()), nullptr);
    auto* const first = new Noted;
    first->m_refCount = 2;
    manager.ReplaceDispatcher(first);
    manager.ReplaceDispatcher(first);
    EXPECT_EQ(manager.Dispatcher(), first);
    EXPECT_EQ(s_calls, "");
    manager.ReplaceDispatcher(new Noted);
    EXPECT_EQ(s_calls, "d");
  }
  EXPECT_EQ(s_calls, "dd");
}

TEST(EventService, FirstCallersOfManyThreadsGetOneManager) {
  constexpr std::size_t kThreads = 8;
  std::vector<ltEventManager<ltEventService>*> seen(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  LTLib::Testing::Latch start(kThreads);
  for (auto& place : seen) {
    threads.emplace_back([&start, &place] {
      start.arrive_and_wait();
      place = ltEventService::Instance();
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const auto* manager : seen) {
    EXPECT_EQ(manager, ltEventService::Instance());
  }
  ASSERT_NE(seen.front(), nullptr);
  EXPECT_EQ(seen.front()->Dispatcher()->m_refCount, 1);
  ltEventService a;
  ltEventService b;
  EXPECT_EQ(&(a = b), &a);
  EXPECT_EQ(&(a = ltEventService()), &a);
}

}  // namespace

// NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)
