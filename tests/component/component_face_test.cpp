// Components on the base class that does all for them, and how they are created.
#include "ltlib/component.h"

#include <filesystem>
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

using Offers = std::vector<LTLib::ComponentOffer>;

std::string nulls(std::size_t count) {
  return std::string(count, '\0');
}

// Little-endian, with a table of one section at 90.
std::string peOf32Bits(const std::string& section) {
  return "MZ" + nulls(58) + '@' + nulls(3) + "PE" + nulls(4) + '\1' + nulls(13) + '\2' + nulls(5) +
         "ltoffers" + static_cast<char>(section.size()) + nulls(7) + '\xFF' + nulls(3) + '\x8C' +
         nulls(29) + section;
}

// Big-endian, with a table of two sections at 120.
std::string elfOf32Bits(const std::string& section) {
  return "\177ELF\1\2" + nulls(29) + '\x78' + nulls(11) + '\x28' + nulls(1) + '\2' + nulls(1) +
         '\1' + nulls(8) + section + nulls(41 - section.size()) + "ltoffers" + nulls(14) + '\1' +
         nulls(15) + '<' + nulls(3) + static_cast<char>(section.size()) + nulls(35) + 'd' +
         nulls(3) + '\n' + nulls(16);
}

TEST(LibraryOffers, AreReadFromAnyFile) {
  using namespace std::string_literals;
  const TempFolder folder;
  const auto reads = [&](const std::string& bytes) {
    const auto offers = LTLib::libraryOffers(folder.write("library", bytes));
    EXPECT_NE(offers.classes.empty(), offers.failure.empty());
    return offers;
  };
  const std::string one = "\1B\0I/1.0\0J\0\0a word\0"s;
  const LTLib::ComponentOffer b{"B", {"I/1.0", "J"}, "a word"};
  for (const auto& [section, offers] :
       std::vector<std::pair<std::string, Offers>>{{one, {b}},
                                                   {one + "\0\0\0\1A\0\0\0\0"s, {{"A", {}, ""}, b}},
                                                   {"\0\0"s, {}},
                                                   {"\1\0\0\0"s, {}},
                                                   {"\1B\0I"s, {}},
                                                   {one + "\1A\0\0"s, {}},
                                                   {one + "A"s, {}}}) {
    EXPECT_EQ(reads(peOf32Bits(section)).classes, offers);
    EXPECT_EQ(reads(elfOf32Bits(section)).classes, offers);
  }
  for (std::string bytes : {peOf32Bits(one), elfOf32Bits(one)}) {
    for (char& hostile : bytes) {
      hostile = static_cast<char>(~hostile);
      reads(bytes);
      hostile = static_cast<char>(~hostile);
    }
  }
  EXPECT_EQ(reads("no library").failure, "it is no library");
  EXPECT_EQ(LTLib::libraryOffers(folder.path()).failure, "it cannot be read");
  EXPECT_EQ(LTLib::libraryOffers(libraryPath("quiet")).failure,
            "it has no section ltoffers, which LTLIB_COMPONENT makes");
}

TEST(LibraryOffers, AreThereInWholeOrNotAtAll) {
  const TempFolder folder;
  const Offers all{
      {"Example.Hello", {"Example.Greeter/1.0", "Example.Counter/1.0"}, "greets by name"},
      {"Offers.Bare", {}, ""}};
  const std::string file = folder.path("library");
  std::filesystem::copy_file(libraryPath("offers"), file);
  EXPECT_EQ(LTLib::libraryOffers(file).classes, all);
  const auto step = std::filesystem::file_size(file) / 200;
  for (auto left = step * 200; left > 0; left -= step) {
    std::filesystem::resize_file(file, left - step);
    const LTLib::LibraryOffers offers = LTLib::libraryOffers(file);
    EXPECT_TRUE(offers.failure.empty() ? offers.classes == all : offers.classes.empty()) << left;
  }
}

}  // namespace
