// Keys and walks: what each way of setting one leaves, what walks find and deletion reaches.
#include <tuple>

#include "tests/registry/registry_fixture.h"

namespace {

using namespace LTLib::Testing;
using LTLib::kFailure;
using LTLib::resultFromSystemError;

class RegKey : public RegistryObjects {};

QSConfigVariableManager& variables() {
  return *QSConfigVariableManager::GetInstance();
}

// "root|path".
std::string shown(const CQSRegKey& key) {
  return std::to_string(key.GetRootKEY()) + '|' + key.GetPath();
}

TEST_F(RegKey, EveryWayOfSettingExpandsThePath) {
  const std::string longName(400, 'n');
  const std::tuple<const char*, const char*, QSResult, std::string> cases[] = {
      {nullptr, "A\\B", 0, "1|A\\B"},
      {nullptr, "%CompanyRoot%\\x", 0, "1|Software\\Tarn Quillmere\\x"},
      {nullptr, "%CompanyName%%Nowhere%x", kFailure, "1|Tarn Quillmere%Nowhere%x"},
      {nullptr, nullptr, kFailure, ""},
      {"A\\", "B", 0, "1|A\\\\B"},
      {"", "B", 0, "1|\\B"},
      {longName.c_str(), longName.c_str(), 0, "1|" + longName + '\\' + longName},
      {"A%", "CompanyName%", kFailure, "1|A%\\CompanyName%"},  // the marks pair up
      {"A", nullptr, kFailure, ""},
  };
  for (const auto& [above, path, result, left] : cases) {
    const CQSRegKey parent(kUser, above);
    CQSRegKey set(REG_ROOT_USERS, "Old");
    EXPECT_EQ(above != nullptr ? set.SetKey(parent, path) : set.SetKey(kUser, path), result);
    // Null changes nothing.
    EXPECT_EQ(shown(set), path != nullptr ? left : "3|Old");
    EXPECT_EQ(shown(above != nullptr ? CQSRegKey(parent, path) : CQSRegKey(kUser, path)),
              path != nullptr ? left : "0|");
  }
  EXPECT_EQ(shown({}), "0|");
}

TEST_F(RegKey, AKeyMayBeSetFromItselfAndCopiesExpandOnceMore) {
  CQSRegKey key(kUser, "A");
  EXPECT_EQ(key.SetKey(key, "B") + key.SetKey(key, key.GetPath()), 0);
  EXPECT_EQ(shown(key), "1|A\\B\\A\\B");
  EXPECT_EQ(key.SetKey(kUser, key.GetPath() + 2), 0);
  EXPECT_EQ(shown(key), "1|B\\A\\B");
  const CQSRegKey early(kUser, "%KeyTestLate%\\x");
  EXPECT_EQ(variables().AddVariable("KeyTestLate", "now"), 0);
  key = early;
  EXPECT_EQ(shown(early) + shown(key) + shown(CQSRegKey(early)),
            "1|%KeyTestLate%\\x1|now\\x1|now\\x");
  EXPECT_EQ(variables().RemoveVariable("KeyTestLate"), 0);
}

TEST_F(RegKey, KeysThatAreNotThereAndUnknownRoots) {
  make("There");
  EXPECT_TRUE(key("There").IsCreated());
  EXPECT_EQ(key("Never").IsCreated(), filesServe());
  EXPECT_FALSE(CQSRegKey().IsCreated());
  for (const enumRegRoot root : {REG_ROOT_NONE, static_cast<enumRegRoot>(6)}) {
    CQSRegValue value(root, "A\\B", "v");
    CQSRegKey key(root, "A\\B");
    std::string name;
    EXPECT_EQ(contentOf(value), codeOf(kUnknownRoot()));
    for (const QSResult result :
         {value.Write("x"), value.Delete("v"), key.DeleteKey(false), key.DeleteKey(true),
          CQSRegEnumKey(key).GetFirst(name), CQSRegEnumValue(key).GetFirst(name)}) {
      EXPECT_EQ(result, kUnknownRoot()) << root;
    }
    EXPECT_FALSE(key.IsCreated());
  }
}

TEST_F(RegKey, DeletesWhatHasNoSubKeysAndAllBelowWhenAsked) {
  make("T\\A\\B");
  make("T\\A\\D");
  make("T\\E");
  EXPECT_EQ(key("T").DeleteKey(false), kKeyHasSubKeys());
  EXPECT_EQ(key("T\\A\\D").DeleteKey(false), 0);
  EXPECT_EQ(namesOf(CQSRegEnumKey(key("T\\A"))), Names{"B"});
  EXPECT_EQ(key("T").DeleteKey(true), 0);
  EXPECT_EQ(key("T").DeleteKey(true), resultFromSystemError(kMissing()));
  EXPECT_EQ(key("T").DeleteKey(false), resultFromSystemError(kMissing()));
}

// A sub-key's name goes through the expansion, so that it may lead to another key or to none. The
// walk stops there, and nothing outside the key is touched.
TEST_F(RegKey, RecursiveDeletionStopsAtANameThatMeansAnotherKey) {
  make("Kept");
  for (const std::string meaning : {"", "\\\\", "Sibling"}) {
    const std::string top = "T" + std::to_string(meaning.size());
    make(top + "\\!First");  // the first by arrival and by order
    makeRaw(top + "\\%KeyTest%");
    EXPECT_EQ(variables().AddVariable("KeyTest", meaning), 0);
    EXPECT_LT(key(top).DeleteKey(true), 0) << meaning;
    EXPECT_EQ(namesOf(CQSRegEnumKey(key(top))), Names{"%KeyTest%"});
    EXPECT_EQ(variables().RemoveVariable("KeyTest"), 0);
    EXPECT_EQ(key(top).DeleteKey(true), 0) << "no such variable: the name stays as it is";
  }
  EXPECT_EQ(namesOf(CQSRegEnumValue(key("Kept"))), Names{"made"});
}

// The percent sign of a name may pair up with one above it, so that the path changes there.
TEST_F(RegKey, RecursiveDeletionGoesBackUpFromWhereverANameLed) {
  makeRaw("5%\\a%b");
  make("5!Longb\\Deep");
  EXPECT_EQ(variables().AddVariable("\\a", "!Long"), 0);
  EXPECT_EQ(key("5%").DeleteKey(true), resultFromSystemError(kMissing())) << "at the second try";
  EXPECT_EQ(variables().RemoveVariable("\\a"), 0);
  EXPECT_EQ(namesOf(CQSRegEnumKey(key(""))), Names{"5%"});
  EXPECT_EQ(key("5%").DeleteKey(true), 0);
}

TEST_F(RegKey, ConfigurationFunctionsReachTheBackend) {
  std::string pathname = stores().path("copy.cfg");
  EXPECT_EQ(SaveConfiguration(kUser, pathname), 0);
  EXPECT_EQ(SaveConfiguration(static_cast<enumRegRoot>(6), pathname), filesServe() ? kFailure : 0);
}

class RegEnum : public RegistryObjects {};

TEST_F(RegEnum, WalksAllAndStartsOver) {
  const Names arrival = {"Mid dle", "Zeta", "alpha", "\xC3\xA4\xE2\x82\xAC"};
  for (const std::string& name : arrival) {
    make("K\\" + name);
    EXPECT_EQ(value("K", name.c_str()).Write("x"), 0);
  }
  EXPECT_EQ(namesOf(CQSRegEnumKey(key("K"))), arrival);
  CQSRegEnumValue walk(kUser, path("K").c_str());
  EXPECT_EQ(namesOf(walk), arrival);
  std::string name = "untouched";
  EXPECT_EQ(walk.GetNext(name), kEndOfWalk());
  EXPECT_EQ(name, "untouched");
  EXPECT_EQ(namesOf(walk), arrival);
  EXPECT_EQ(namesOf(CQSRegEnumKey(key("K\\alpha"))), Names());
}

TEST_F(RegEnum, AWalkOverNothingTouchesNothing) {
  std::string name = "name";
  CQSRegKey sub(kUser, "Old");
  CQSRegValue entry(kUser, "Old", "old");
  EXPECT_EQ(CQSRegEnumKey(key("Never")).GetFirst(name), kWalkOfMissingKey());
  EXPECT_EQ(CQSRegEnumKey(key("Never")).GetFirst(sub), kWalkOfMissingKey());
  EXPECT_EQ(CQSRegEnumValue(key("Never")).GetFirst(entry), kWalkOfMissingKey());
  EXPECT_EQ(name + shown(sub) + entry.GetPath() + entry.GetName(), "name1|OldOldold");
}

TEST_F(RegEnum, EntriesAreSetUpWithKeyAndName) {
  const char* const name = "50%CompanyName%";
  makeRaw("K\\" + std::string(name));
  EXPECT_EQ(value("K", name).Write("text"), 0);
  CQSRegEnumKey keys(key("K"));
  CQSRegKey sub;
  EXPECT_EQ(keys.GetFirst(sub) + keys.GetFirst(sub), 0);
  EXPECT_EQ(shown(sub), "1|" + path("K\\50Tarn Quillmere")) << "expanded in keys alone";
  EXPECT_EQ(namesOf(keys), Names{name});

  CQSRegEnumValue values(key("K"));
  CQSRegValue entry;
  do {
    EXPECT_EQ(values.GetNext(entry), 0);
  } while (std::string(entry.GetName()) != name);
  EXPECT_EQ(entry.GetPath(), path("K"));
  char* text = nullptr;
  ASSERT_EQ(entry.Read(text), 0);
  EXPECT_EQ(values.GetFirst(entry) + values.GetFirst(entry), 0);
  EXPECT_STREQ(text, "text") << "what was read stays through a step of the walk";
  EXPECT_EQ(m_manager.regDeleteKey(m_root, path("K\\" + std::string(name)).c_str()), 0);
}

// Names of 200 bytes and more do not fit; the walk stays where it is, also when it is tried again.
TEST_F(RegEnum, LongNamesEndAWalk) {
  const std::string longest(199, 'n');
  for (const std::string& name : {std::string("a"), longest, longest + 'n'}) {
    make("K\\" + name);
    EXPECT_EQ(value("K", name.c_str()).Write("x"), 0);
  }
  CQSRegEnumKey keys(key("K"));
  CQSRegEnumValue values(key("K"));
  const auto bothGive = [&](QSResult result, const std::string& expected) {
    std::string name = "old";
    std::string valueName = "old";
    EXPECT_EQ(keys.GetNext(name), result);
    EXPECT_EQ(values.GetNext(valueName), result);
    EXPECT_EQ(name + valueName, expected + expected);
  };
  bothGive(0, "a");
  bothGive(0, longest);
  bothGive(resultFromSystemError(kMoreData), "old");
  bothGive(resultFromSystemError(kMoreData), "old");
  EXPECT_EQ(key("K\\" + longest + 'n').DeleteKey(false), 0);
}

// Derived classes may take part in a walk: the steps call one another virtually.
class Marking : public CQSRegEnumValue {
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
  CQSRegValue entry;
  EXPECT_EQ(Marking(key("K")).GetFirst(entry), 0);
  EXPECT_STREQ(entry.GetName(), "<v>");
}

}  // namespace
