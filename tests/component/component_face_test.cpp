// Components on the base class that does all for them, and how they are created.
#include "ltlib/component.h"

#include <stdexcept>

#include "tests/component/component_fixture.h"

namespace {

using namespace LTLib::Testing;
using LTLib::ComponentPtr;
using LTLib::CreationFailure;

struct Greeter : iqsUnknown {
  static constexpr iqsID kID{"Face.Greeter/2.3"};
  virtual int greet() = 0;

 protected:
  ~Greeter() = default;
};

struct Counter : iqsUnknown {
  static constexpr iqsID kID{"Face.Counter"};
  virtual int count() const = 0;

 protected:
  ~Counter() = default;
};

template <const char* kText>
struct Asked : Greeter {
  static constexpr iqsID kID{kText};
};

int s_alive = 0;

enum class Outcome { kGood, kResult, kThrows, kFactoryThrows };
Outcome s_outcome = Outcome::kGood;

class Hello : public LTLib::Component<Hello, Greeter, Counter> {
 public:
  Hello() {
    if (s_outcome == Outcome::kFactoryThrows) {
      throw std::runtime_error("no room");
    }
    ++s_alive;
  }
  ~Hello() override { --s_alive; }

  QSResult init() {  // NOLINT(bugprone-virtual-near-miss)
    if (s_outcome == Outcome::kThrows) {
      throw std::runtime_error("no network");
    }
    return s_outcome == Outcome::kResult ? LTLib::kFailure : LTLib::kSuccess;
  }
  int greet() override { return ++m_count; }
  int count() const override { return m_count; }

 private:
  int m_count = 0;
};

// The registration is the test program's own; what the entry names only has to load.
class ComponentFace : public ComponentTest {
 protected:
  ComponentFace() {
    enterClass("Face.Hello", libraryPath("quiet"));
    s_outcome = Outcome::kGood;
    m_registration.emplace("Face.Hello");
  }
  ~ComponentFace() override { EXPECT_EQ(s_alive, 0); }

  std::optional<LTLib::ComponentRegistration<Hello>> m_registration;
};

TEST_F(ComponentFace, OneObjectAnswersByAllItsInterfaces) {
  auto greeter = LTLib::create<Greeter>("Face.Hello");
  EXPECT_EQ(greeter->greet(), 1);
  const auto counter = greeter.query<Counter>();
  ComponentPtr<iqsUnknown> whole = counter;
  EXPECT_EQ(counter->count(), 1);
  EXPECT_TRUE(counter.query<Greeter>() == greeter && whole && greeter != nullptr);
  EXPECT_EQ(greeter->AddRef(), 4u);
  EXPECT_EQ(greeter->Release(), 3u);
  auto moved = std::move(greeter);
  whole = nullptr;
  moved.reset();
  EXPECT_TRUE(moved == nullptr && s_alive == 1);
}

TEST_F(ComponentFace, AnOuterObjectSpeaksForTheWhole) {
  iqsCUnknown* inner = nullptr;
  void* out = nullptr;
  const auto outer = LTLib::create<Greeter>("Face.Hello");
  EXPECT_EQ(Hello::make(outer.get(), &inner), 0);
  EXPECT_EQ(inner->InnerQueryInterface(Counter::kID, &out), 0);
  auto counter = ComponentPtr<Counter>::adopt(static_cast<Counter*>(out));
  EXPECT_EQ(counter.query<Greeter>(), outer);
  counter.reset();
  EXPECT_EQ(inner->InnerRelease(), 0u) << "its interfaces' references are the outer object's";
}

constexpr char kSame[] = "Face.Greeter/2.3";
constexpr char kOlder[] = "Face.Greeter/2.0";
constexpr char kNewer[] = "Face.Greeter/2.4";
constexpr char kNextMajor[] = "Face.Greeter/3.0";
constexpr char kFormerMajor[] = "Face.Greeter/1.3";
constexpr char kWithout[] = "Face.Greeter";
constexpr char kNoNumber[] = "Face.Greeter/2.x";

template <const char* kText>
std::string reasonFor() {
  CreationFailure failure;
  const auto made = LTLib::create<Asked<kText>>("Face.Hello", failure);
  EXPECT_EQ(made == nullptr, failure.result < 0);
  return failure.reason;
}

TEST_F(ComponentFace, ANewerProviderServesAnOlderUserOfTheSameMajorVersion) {
  const auto refusal = [](const std::string& asked) {
    return "Face.Hello does not have " + asked + ", but Face.Greeter/2.3";
  };
  EXPECT_EQ(reasonFor<kSame>(), "");
  EXPECT_EQ(reasonFor<kOlder>(), "");
  EXPECT_EQ(reasonFor<kNewer>(), refusal(kNewer));
  EXPECT_EQ(reasonFor<kNextMajor>(), refusal(kNextMajor));
  EXPECT_EQ(reasonFor<kFormerMajor>(), refusal(kFormerMajor));
  EXPECT_EQ(reasonFor<kWithout>(), refusal(kWithout));
  EXPECT_EQ(reasonFor<kNoNumber>(), "Face.Hello does not have Face.Greeter/2.x");
}

TEST_F(ComponentFace, EachFailureTellsItsReason) {
  const auto reason = [](const char* id) {
    CreationFailure failure;
    EXPECT_FALSE(LTLib::create<Greeter>(id, failure));
    EXPECT_THROW((void)LTLib::create<Greeter>(id), QSException);
    return failure.reason;
  };
  EXPECT_NE(reason("Face.None").find("No DLL registered"), std::string::npos);
  enterClass("Face.Lost", "/no/such/library");
  const std::string lost = reason("Face.Lost");
  EXPECT_NE(lost.find("cannot load"), std::string::npos) << lost;
  EXPECT_NE(lost.find(LTLib::reportClass("Face.Lost")->loadFailure), std::string::npos) << lost;
  s_outcome = Outcome::kFactoryThrows;
  EXPECT_EQ(reason("Face.Hello"), "the factory of Face.Hello failed: no room");
  s_outcome = Outcome::kThrows;
  EXPECT_EQ(reason("Face.Hello"), "no network");
  s_outcome = Outcome::kResult;
  EXPECT_EQ(reason("Face.Hello"), "Face.Hello failed in Init with the result -2147467259");
  m_registration.reset();
  EXPECT_EQ(reason("Face.Hello"),
            "the library " + libraryPath("quiet") + " offers no component Face.Hello");
}

}  // namespace
