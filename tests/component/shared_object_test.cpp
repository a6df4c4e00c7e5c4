#include "ltlib/component/shared_object.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <thread>
#include <vector>

#include "tests/support/latch.h"

namespace {

struct Shared : iqsSharedObject {
  explicit Shared(std::optional<int>* end = nullptr) : m_end(end) {}
  ~Shared() override {
    if (m_end != nullptr) {
      *m_end = m_refCount.load();
    }
  }
  int value = 5;

 private:
  std::optional<int>* m_end;
};

struct Derived : Shared {
  using Shared::Shared;
};

TEST(IqsPtr, CountsCopiesAndEndsWithTheLast) {
  std::optional<int> end;
  auto* const object = new Shared(&end);
  {
    iqs_ptr<Shared> first(object);
    EXPECT_EQ(object->m_refCount, 1);
    const iqs_ptr<Shared> second(first);
    EXPECT_EQ(object->m_refCount, 2);
    iqs_ptr<Shared> third;
    third = second;
    EXPECT_EQ(object->m_refCount, 3);
    iqs_ptr<Shared> moved(std::move(third));
    EXPECT_EQ(object->m_refCount, 3);
    first.Release();
    EXPECT_FALSE(first);
    EXPECT_EQ(object->m_refCount, 2);
    first.swap(moved);
    EXPECT_EQ(first.get(), object);
    EXPECT_FALSE(moved);
    moved = iqs_ptr<Shared>();
    iqs_ptr<Shared>& same = first;
    first = same;
    EXPECT_EQ(object->m_refCount, 2);
    EXPECT_EQ(first->value, (*second).value);
    EXPECT_TRUE(first == second);
    EXPECT_FALSE(end.has_value());
  }
  EXPECT_EQ(end, 1);
}

TEST(IqsPtr, ConstAndBasePointersShareTheCount) {
  std::optional<int> end;
  auto* const object = new Derived(&end);
  iqs_ptr<Derived> derived(object);
  iqs_ptr<Shared> base(derived);
  iqs_const_ptr<Shared> reading(derived);
  iqs_const_ptr<Shared> copy;
  copy = reading;
  static_assert(std::is_same_v<decltype(reading.get()), const Shared*>);
  EXPECT_EQ(object->m_refCount, 4);
  EXPECT_EQ(copy->value + (*reading).value, 10);
  EXPECT_TRUE(copy == reading);
  derived.Release();
  base.Release();
  reading.Release();
  EXPECT_FALSE(end.has_value());
  copy.swap(reading);
  reading.Release();
  EXPECT_EQ(end, 1);
}

TEST(IqsPtr, NullIsHarmless) {
  iqs_ptr<Shared> null(nullptr);
  iqs_ptr<Shared> copy(null);
  iqs_const_ptr<Shared> reading(copy);
  copy = null;
  copy.Release();
  EXPECT_FALSE(copy);
  EXPECT_FALSE(reading);
  EXPECT_EQ(null.get(), nullptr);
}

TEST(IqsPtr, CountsExactlyUnderManyThreads) {
  constexpr int kThreads = 8;
  std::optional<int> end;
  iqs_ptr<Shared> shared(new Shared(&end));
  LTLib::Testing::Latch start(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&start, own = shared] {
      start.arrive_and_wait();
      for (int round = 0; round < 2000; ++round) {
        const iqs_const_ptr<Shared> copy(own);
      }
    });
  }
  shared.Release();
  for (std::thread& thread : threads) {
    thread.join();
  }
  threads.clear();
  EXPECT_EQ(end, 1);
}

class Counted : public QSSharedObject {
 public:
  ~Counted() override = default;
  std::atomic<std::int32_t>& count() { return m_refCount; }
};

TEST(QSSharedObject, StartsAtOneAndLeavesMinusOne) {
  void* const storage = ::operator new(sizeof(Counted));
  auto* const object = new (storage) Counted;
  EXPECT_EQ(object->count(), 1);
  const auto* const count = reinterpret_cast<const volatile std::int32_t*>(&object->count());
  object->~Counted();
  EXPECT_EQ(*count, -1);
  ::operator delete(storage);
}

}  // namespace
