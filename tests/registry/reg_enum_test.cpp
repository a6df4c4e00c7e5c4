// Walks over sub-keys and values.
#include <algorithm>

#include "tests/registry/registry_fixture.h"

namespace {

using LTLib::resultFromSystemError;
using LTLib::Testing::kUser;
using LTLib::Testing::namesOf;

using Names = std::vector<std::string>;

class RegEnum : public LTLib::Testing::RegistryObjects {
 protected:
  // The operating system has an order of its own.
  Names ordered(Names names) const {
    if (!m_facts.hasStoreFile) {
      std::sort(names.begin(), names.end());
    }
    return names;
  }
};

TEST_F(RegEnum, WalksAllAndStartsOver) {
  // A lone percent sign fails the expansion that goes before the system makes a key.
  const Names arrival = {"Zeta", "alpha", "Mid dle", m_facts.hasStoreFile ? "100%" : "100"};
  for (const std::string& name : arrival) {
    make("K\\" + name);
    EXPECT_EQ(value("K", name.c_str()).Write("x"), 0);
  }
  EXPECT_EQ(ordered(namesOf(CQSRegEnumKey(key("K")))), ordered(arrival));
  CQSRegEnumValue walk(kUser, path("K").c_str());
  const Names first = namesOf(walk);
  EXPECT_EQ(ordered(first), ordered(arrival));
  std::string name = "untouched";
  EXPECT_EQ(walk.GetNext(name), m_facts.endOfWalk);
  EXPECT_EQ(name, "untouched");
  EXPECT_EQ(namesOf(walk), first);
  EXPECT_EQ(namesOf(CQSRegEnumKey(key("K\\alpha"))), Names());
}

TEST_F(RegEnum, AWalkOverNothingTouchesNothing) {
  std::string name = "name";
  CQSRegKey sub(kUser, "Old");
  CQSRegValue entry(kUser, "Old", "old");
  EXPECT_EQ(CQSRegEnumKey(key("Never")).GetFirst(name), m_facts.walkOfMissingKey);
  EXPECT_EQ(CQSRegEnumValue(key("Never")).GetFirst(name), m_facts.walkOfMissingKey);
  EXPECT_EQ(CQSRegEnumKey(key("Never")).GetFirst(sub), m_facts.walkOfMissingKey);
  EXPECT_EQ(CQSRegEnumValue(key("Never")).GetFirst(entry), m_facts.walkOfMissingKey);
  // A null path leaves the walked key without a root.
  EXPECT_EQ(CQSRegEnumKey(kUser, nullptr).GetFirst(name), m_facts.unknownRoot);
  EXPECT_EQ(CQSRegEnumValue(kUser, nullptr).GetFirst(name), m_facts.unknownRoot);
  EXPECT_EQ(name + sub.GetPath() + entry.GetPath() + entry.GetName(), "nameOldOldold");
}

TEST_F(RegEnum, EntriesAreSetUpWithKeyAndName) {
  make("K\\Sub");
  EXPECT_EQ(value("K", "v").Write("text"), 0);
  CQSRegKey sub;
  EXPECT_EQ(CQSRegEnumKey(key("K")).GetNext(sub), 0);
  EXPECT_EQ(sub.GetPath(), path("K\\Sub"));
  EXPECT_EQ(sub.GetRootKEY(), kUser);

  CQSRegValue entry(kUser, path("K\\Sub").c_str(), "made");
  void* bytes = nullptr;
  unsigned long size = 0;
  EXPECT_EQ(entry.Read(bytes, size), LTLib::kFailure);
  EXPECT_EQ(CQSRegEnumValue(key("K")).GetNext(entry), 0);
  EXPECT_EQ(entry.GetPath(), path("K"));
  EXPECT_STREQ(entry.GetName(), "v");
  char* text = nullptr;
  ASSERT_EQ(entry.Read(text), 0);
  // What was read stays through a step of the walk.
  CQSRegEnumValue again(key("K"));
  EXPECT_EQ(again.GetNext(entry), 0);
  EXPECT_STREQ(text, "text");
}

TEST_F(RegEnum, NamesWithPercentSignsAreExpandedInKeysAlone) {
  make("K");
  for (const char* name : {"a%CompanyName%b", "%Nowhere%"}) {
    void* made = nullptr;
    ASSERT_EQ(QSRegistryManager::GetInstance()->regCreateKey(LTLib::predefinedRootHandle(kUser),
                                                             (path("K\\") + name).c_str(), &made),
              0);
    EXPECT_EQ(QSRegistryManager::GetInstance()->regCloseKey(made), 0);
    CQSRegEnumKey walk(key("K"));
    std::string found;
    CQSRegKey sub;
    EXPECT_EQ(walk.GetFirst(found), 0);
    EXPECT_EQ(found, name);
    EXPECT_EQ(walk.GetFirst(sub), 0);
    EXPECT_EQ(sub.GetPath(), path(name[0] == 'a' ? "K\\aTarn Quillmereb" : "K\\%Nowhere%"));
    EXPECT_EQ(QSRegistryManager::GetInstance()->regDeleteKey(LTLib::predefinedRootHandle(kUser),
                                                             (path("K\\") + name).c_str()),
              0);
  }
  EXPECT_EQ(value("V", "50%CompanyName%").Write("x"), 0);
  CQSRegValue entry;
  EXPECT_EQ(CQSRegEnumValue(key("V")).GetNext(entry), 0);
  EXPECT_STREQ(entry.GetName(), "50%CompanyName%");
}

// Names of 200 bytes and more do not fit; the walk stays where it is, also when it is tried again.
TEST_F(RegEnum, LongNamesEndAWalk) {
  constexpr QSResult kMoreData = resultFromSystemError(234);
  for (const std::size_t length : {199u, 200u, 201u, 300u}) {
    const std::string below = "K" + std::to_string(length);
    const std::string name(length, 'n');
    // A key's name of the operating system ends at 255, and where that is Wine's, a path at 260.
    const std::string keyName(m_facts.hasStoreFile ? length : std::min<std::size_t>(length, 210),
                              'n');
    make(below + "\\a");
    make(below + '\\' + keyName);
    EXPECT_EQ(value(below, "a").Write("x"), 0);
    EXPECT_EQ(value(below, name.c_str()).Write("x"), 0);
    CQSRegEnumKey keys(key(below));
    CQSRegEnumValue values(key(below));
    std::string found;
    EXPECT_EQ(keys.GetNext(found), 0);
    EXPECT_EQ(values.GetNext(found), 0);
    EXPECT_EQ(found, "a");
    if (length < 200) {
      EXPECT_EQ(keys.GetNext(found), 0);
      EXPECT_EQ(found, keyName);
      EXPECT_EQ(values.GetNext(found), 0);
      EXPECT_EQ(found, name);
      continue;
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
      EXPECT_EQ(keys.GetNext(found), kMoreData) << length;
      EXPECT_EQ(values.GetNext(found), kMoreData) << length;
      EXPECT_EQ(found, "a");
    }
    // Once the name is out of the way the same index gives what comes next.
    EXPECT_EQ(CQSRegKey(key(below), keyName.c_str()).DeleteKey(false), 0);
    EXPECT_EQ(value(below, "").Delete(name.c_str()), 0);
    make(below + "\\z");
    EXPECT_EQ(value(below, "z").Write("x"), 0);
    EXPECT_EQ(keys.GetNext(found), 0);
    EXPECT_EQ(values.GetNext(found), 0);
    EXPECT_EQ(found, "z");
  }
}

TEST_F(RegEnum, ADeletionBehindTheIndexPassesOneOver) {
  for (const char* name : {"a", "b", "c"}) {
    EXPECT_EQ(value("K", name).Write("x"), 0);
  }
  CQSRegEnumValue walk(key("K"));
  std::string name;
  EXPECT_EQ(walk.GetNext(name), 0);
  EXPECT_EQ(value("K", "").Delete("a"), 0);
  EXPECT_EQ(walk.GetNext(name), 0);
  EXPECT_EQ(name, "c");
  EXPECT_EQ(key("K").DeleteKey(true), 0);
  EXPECT_EQ(walk.GetNext(name), m_facts.walkOfMissingKey);
}

TEST_F(RegEnum, ReadingUnderAMissingKeyMayLeaveItBehind) {
  make("There");
  CQSRegValue::e_data_struct data;
  EXPECT_EQ(value("Gone\\Deeper", "v").Read(data), m_facts.readMissingKey);
  EXPECT_EQ(namesOf(CQSRegEnumKey(key(""))),
            m_facts.readingAddsKeys ? (Names{"There", "Gone"}) : Names{"There"});
}

// Derived classes may take part in a walk: the steps call one another virtually.
class Upper : public CQSRegEnumValue {
 public:
  using CQSRegEnumValue::CQSRegEnumValue;
  using CQSRegEnumValue::GetNext;

  QSResult GetNext(std::string& name) override {
    const QSResult result = CQSRegEnumValue::GetNext(name);
    name = '<' + name + '>';
    return result;
  }
};

TEST_F(RegEnum, StepsCallOneAnotherVirtually) {
  EXPECT_EQ(value("K", "v").Write("x"), 0);
  Upper walk(key("K"));
  std::string name;
  CQSRegValue entry;
  EXPECT_EQ(walk.GetFirst(name), 0);
  EXPECT_EQ(name, "<v>");
  EXPECT_EQ(walk.GetFirst(entry), 0);
  EXPECT_STREQ(entry.GetName(), "<v>");
}

TEST_F(RegEnum, NamesAboveAsciiComeBack) {
  const std::string name = "\xC3\xA4\xE2\x82\xAC";
  make("K\\" + name);
  EXPECT_EQ(value("K", name.c_str()).Write("x"), 0);
  EXPECT_EQ(namesOf(CQSRegEnumKey(key("K"))), Names{name});
  EXPECT_EQ(namesOf(CQSRegEnumValue(key("K"))), Names{name});
}

}  // namespace
