// The two families of counted objects.
#include <gtest/gtest.h>

#include <string>

#include "ltlib/component/iqsunknown.h"
#include "ltlib/component/shared_object.h"

namespace {

// The count that the last object saw at its end; 0 until then.
std::uint32_t s_countAtEnd = 0;

struct Component : iqsCUnknown {
  explicit Component(iqsUnknown* outer = nullptr) : iqsCUnknown(outer) { s_countAtEnd = 0; }
  ~Component() override { s_countAtEnd = m_refCount; }

  bool FinalRelease() override {
    m_refCount = refusal;
    return refusal == 0 && iqsCUnknown::FinalRelease();
  }

  std::uint32_t count() const { return m_refCount; }
  iqsUnknown* face() { return &m_innerUnknown; }
  iqsUnknown* outer() const { return m_outerUnknown; }

  std::uint32_t refusal = 0;  // the count with which the object outlives its last release
};

TEST(IqsCUnknown, BothFacesGiveTheSameAnswers) {
  for (const bool known : {true, false}) {
    const std::string id = known ? "IQS_UNKNOWN" : "iqs_unknown";
    const QSResult result = known ? 0 : LTLib::kNotAvailable;
    Component object;
    void* inner = &object;
    void* outer = &object;
    EXPECT_EQ(object.InnerQueryInterface(id.c_str(), &inner), result);
    EXPECT_EQ(object.face()->QueryInterface(id.c_str(), &outer), result);
    EXPECT_EQ(inner, known ? object.face() : nullptr);
    EXPECT_EQ(outer, inner);
    EXPECT_EQ(object.count(), known ? 3u : 1u);
  }
}

TEST(IqsCUnknown, DiesWithItsLastReferenceUnlessItRefuses) {
  auto* const object = new Component;
  iqsUnknown* const face = object->face();
  EXPECT_EQ(object->outer(), face);
  EXPECT_EQ(Component(face).outer(), face);
  s_countAtEnd = 0;
  EXPECT_EQ(face->AddRef(), 2u);
  EXPECT_EQ(object->InnerRelease(), 1u);
  object->refusal = 1;
  EXPECT_EQ(face->Release(), 0u);
  EXPECT_EQ(s_countAtEnd, 0u);
  object->refusal = 0;
  EXPECT_EQ(face->Release(), 0u);
  EXPECT_EQ(s_countAtEnd, 1u);
}

struct Shared : iqsSharedObject {
  ~Shared() override { s_countAtEnd = static_cast<std::uint32_t>(m_refCount); }
};

struct Derived : Shared {};

TEST(IqsPtr, CountsCopiesAndEndsWithTheLast) {
  s_countAtEnd = 0;
  auto* const object = new Derived;
  iqs_ptr<Derived> derived(object);
  iqs_ptr<Shared> first(derived);
  iqs_ptr<Shared> second;
  second = first;
  iqs_const_ptr<Shared> reading(first);
  iqs_ptr<Shared> moved(std::move(second));
  EXPECT_EQ(object->m_refCount, 4);
  iqs_const_ptr<Shared> base = iqs_const_ptr<Derived>(derived);
  EXPECT_TRUE(moved == first && base == reading && base != nullptr);
  base = nullptr;
  EXPECT_TRUE(base == nullptr && second == nullptr);
  first.Release();
  derived.Release();
  iqs_const_ptr<Shared>().swap(reading);
  EXPECT_EQ(object->m_refCount, 1);
  EXPECT_EQ(s_countAtEnd, 0u);
  moved.Release();
  EXPECT_EQ(s_countAtEnd, 1u);
}

}  // namespace
