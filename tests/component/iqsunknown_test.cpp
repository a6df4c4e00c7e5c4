#include "ltlib/component/iqsunknown.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/latch.h"

namespace {

// Notes its end and keeps itself alive as often as told.
class Component : public iqsCUnknown {
 public:
  explicit Component(iqsUnknown* outer = nullptr, std::optional<std::uint32_t>* end = nullptr)
      : iqsCUnknown(outer), m_end(end) {}

  ~Component() override {
    if (m_end != nullptr) {
      *m_end = m_refCount.load();
    }
  }

  bool FinalRelease() override {
    if (refusals == 0) {
      return iqsCUnknown::FinalRelease();
    }
    --refusals;
    m_refCount = 7;
    return false;
  }

  std::uint32_t count() const { return m_refCount; }
  iqsUnknown* publicFace() { return &m_innerUnknown; }
  iqsUnknown* outer() const { return m_outerUnknown; }

  int refusals = 0;

 private:
  std::optional<std::uint32_t>* m_end;
};

TEST(IqsID, ComparesByContent) {
  const std::string copy = "IQS_UNKNOWN";
  struct Case {
    const char* a;
    const char* b;
    bool equal;
  };
  const Case cases[] = {{"IQS_UNKNOWN", copy.c_str(), true},
                        {copy.c_str(), copy.c_str(), true},
                        {"iqs_unknown", "IQS_UNKNOWN", false},
                        {nullptr, nullptr, true},
                        {nullptr, "", false},
                        {"", nullptr, false},
                        {"", "", true}};
  for (const Case& row : cases) {
    EXPECT_EQ(iqsID(row.a) == iqsID(row.b), row.equal);
    EXPECT_EQ(iqsID(row.a).text(), row.a);
  }
}

TEST(IqsCUnknown, KnowsWhoSpeaksForIt) {
  Component alone;
  EXPECT_EQ(alone.outer(), alone.publicFace());
  EXPECT_EQ(alone.count(), 1u);
  Component inside(alone.publicFace());
  EXPECT_EQ(inside.outer(), alone.publicFace());
  EXPECT_EQ(inside.count(), 1u);
  EXPECT_EQ(alone.count(), 1u);
}

TEST(IqsCUnknown, BothFacesGiveTheSameAnswers) {
  const std::string copy = "IQS_UNKNOWN";
  struct Case {
    const char* id;
    QSResult result;
  };
  const Case cases[] = {{"IQS_UNKNOWN", 0},
                        {copy.c_str(), 0},
                        {"iqs_unknown", LTLib::kNotAvailable},
                        {"", LTLib::kNotAvailable},
                        {nullptr, LTLib::kNotAvailable}};
  for (const Case& row : cases) {
    SCOPED_TRACE(row.id != nullptr ? row.id : "null");
    Component object;
    void* inner = &object;
    void* outer = &object;
    EXPECT_EQ(object.InnerQueryInterface(row.id, &inner), row.result);
    EXPECT_EQ(object.publicFace()->QueryInterface(row.id, &outer), row.result);
    EXPECT_EQ(inner, row.result == 0 ? object.publicFace() : nullptr);
    EXPECT_EQ(outer, inner);
    EXPECT_EQ(object.count(), row.result == 0 ? 3u : 1u);
    EXPECT_EQ(object.InnerQueryInterface(row.id, nullptr),
              row.result == 0 ? LTLib::kNullArgument : row.result);
    EXPECT_EQ(object.count(), row.result == 0 ? 3u : 1u);
  }
}

TEST(IqsCUnknown, DiesWithItsLastReferenceAndSeesACountOfOne) {
  std::optional<std::uint32_t> end;
  auto* const object = new Component(nullptr, &end);
  iqsUnknown* const face = object->publicFace();
  EXPECT_EQ(face->AddRef(), 2u);
  EXPECT_EQ(object->InnerAddRef(), 3u);
  EXPECT_EQ(object->InnerRelease(), 2u);
  EXPECT_EQ(face->Release(), 1u);
  EXPECT_FALSE(end.has_value());
  EXPECT_EQ(face->Release(), 0u);
  EXPECT_EQ(end, 1u);
  EXPECT_EQ(Component().Init(), 0);
}

TEST(IqsCUnknown, AnObjectMayRefuseToDie) {
  std::optional<std::uint32_t> end;
  auto* const object = new Component(nullptr, &end);
  object->refusals = 1;
  EXPECT_EQ(object->publicFace()->Release(), 0u);
  EXPECT_FALSE(end.has_value());
  EXPECT_EQ(object->count(), 7u);
  for (int left = 6; left >= 0; --left) {
    EXPECT_EQ(object->InnerRelease(), static_cast<std::uint32_t>(left));
  }
  EXPECT_EQ(end, 1u);
}

TEST(IqsCUnknown, CountsExactlyUnderManyThreads) {
  constexpr int kThreads = 8;
  std::optional<std::uint32_t> end;
  auto* const object = new Component(nullptr, &end);
  iqsUnknown* const face = object->publicFace();
  LTLib::Testing::Latch start(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    face->AddRef();
    threads.emplace_back([&start, face] {
      start.arrive_and_wait();
      for (int round = 0; round < 2000; ++round) {
        face->AddRef();
        face->Release();
      }
      face->Release();
    });
  }
  face->Release();
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(end, 1u);
}

}  // namespace
