// Keys by name: what each way of setting one leaves, and what deletion reaches.
#include "tests/registry/registry_fixture.h"

namespace {

using LTLib::kFailure;
using LTLib::Testing::kUser;
using LTLib::Testing::namesOf;

constexpr enumRegRoot kMachine = REG_ROOT_LOCAL_MACHINE;
constexpr auto kUnknown = static_cast<enumRegRoot>(6);
constexpr char kCompany[] = "Software\\Tarn Quillmere";

class RegKey : public LTLib::Testing::RegistryObjects {};

// A variable for the length of a test.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : m_name(name) {
    EXPECT_EQ(QSConfigVariableManager::GetInstance()->AddVariable(name, value), 0);
  }
  ~ScopedVariable() {
    EXPECT_EQ(QSConfigVariableManager::GetInstance()->RemoveVariable(m_name), 0);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  std::string m_name;
};

void expectNames(const CQSRegKey& key, enumRegRoot root, const std::string& path,
                 const std::string& label) {
  EXPECT_EQ(key.GetRootKEY(), root) << label;
  EXPECT_EQ(key.GetPath(), path) << label;
}

struct SettingCase {
  enumRegRoot root;
  const char* path;
  QSResult result;
  const char* left;  // the path afterwards; null where nothing changes
};

constexpr SettingCase kSettings[] = {
    {kMachine, "A\\B", 0, "A\\B"},
    {kMachine, "", 0, ""},
    {kMachine, "%CompanyRoot%", 0, kCompany},
    {kMachine, "%CompanyRoot%\\x", 0, "Software\\Tarn Quillmere\\x"},
    {kMachine, "%CompanyRoot%%Nowhere%x", kFailure, "Software\\Tarn Quillmere%Nowhere%x"},
    {kMachine, "%Nowhere%\\%CompanyRoot%", kFailure, "%Nowhere%\\%CompanyRoot%"},
    {kMachine, "%companyroot%", kFailure, "%companyroot%"},
    {kMachine, "50% off", kFailure, "50% off"},
    {kMachine, "ends in %", kFailure, "ends in %"},
    {kUnknown, "A", 0, "A"},
    {kMachine, nullptr, kFailure, nullptr},
};

TEST_F(RegKey, EveryWayOfSettingDropsOrTellsTheResult) {
  for (const SettingCase& row : kSettings) {
    const std::string label = row.path != nullptr ? row.path : "null";
    CQSRegKey set(kUser, "Old");
    EXPECT_EQ(set.SetKey(row.root, row.path), row.result) << label;
    const CQSRegKey built(row.root, row.path);
    if (row.left != nullptr) {
      expectNames(set, row.root, row.left, label);
      expectNames(built, row.root, row.left, label);
    } else {
      expectNames(set, kUser, "Old", label);
      expectNames(built, REG_ROOT_NONE, "", label);
    }
  }
  expectNames({}, REG_ROOT_NONE, "", "default");
}

TEST_F(RegKey, AChildIsItsParentsPathABackslashAndAName) {
  const std::string longName(400, 'n');
  const struct {
    const char* parent;
    const char* child;
    QSResult result;
    std::string path;
  } cases[] = {
      {"A", "B", 0, "A\\B"},
      {"A\\", "B", 0, "A\\\\B"},
      {"", "B", 0, "\\B"},
      {"A", "", 0, "A\\"},
      {"A", longName.c_str(), 0, "A\\" + longName},
      {longName.c_str(), longName.c_str(), 0, longName + '\\' + longName},
      {"A", "%CompanyName%", 0, "A\\Tarn Quillmere"},
      {"A", "%Nowhere%", kFailure, "A\\%Nowhere%"},
      // The marks of both parts pair up.
      {"A%", "CompanyName%", kFailure, "A%\\CompanyName%"},
  };
  for (const auto& row : cases) {
    const CQSRegKey parent(kMachine, row.parent);
    CQSRegKey set(kUser, "Old");
    EXPECT_EQ(set.SetKey(parent, row.child), row.result) << row.path;
    expectNames(set, kMachine, row.path, row.path);
    expectNames({parent, row.child}, kMachine, row.path, row.path);
  }
  CQSRegKey key(kUser, "Old");
  const CQSRegKey parent(kMachine, "A");
  EXPECT_EQ(key.SetKey(parent, nullptr), kFailure);
  expectNames(key, kUser, "Old", "null child");
  expectNames({parent, nullptr}, REG_ROOT_NONE, "", "null child");
}

TEST_F(RegKey, AKeyMayBeSetFromItself) {
  CQSRegKey key(kMachine, "A");
  EXPECT_EQ(key.SetKey(key, "B"), 0);
  EXPECT_EQ(key.SetKey(key, key.GetPath()), 0);
  expectNames(key, kMachine, "A\\B\\A\\B", "own parent");
  EXPECT_EQ(key.SetKey(kUser, key.GetPath() + 2), 0);
  expectNames(key, kUser, "B\\A\\B", "own path");
  const CQSRegKey& same = key;
  key = same;
  expectNames(key, kUser, "B\\A\\B", "assigned to itself");
}

TEST_F(RegKey, CopiesExpandOnceMore) {
  const CQSRegKey early(kUser, "%KeyTestLate%\\x");
  const ScopedVariable late("KeyTestLate", "now");
  CQSRegKey assigned;
  assigned = early;
  const CQSRegKey copied(early);
  expectNames(early, kUser, "%KeyTestLate%\\x", "the first");
  expectNames(copied, kUser, "now\\x", "copied");
  expectNames(assigned, kUser, "now\\x", "assigned");
}

TEST_F(RegKey, IsCreatedSaysWhatAnOpenSays) {
  EXPECT_EQ(key("Never").IsCreated(), m_facts.missingKeyIsCreated);
  make("There");
  EXPECT_TRUE(key("There").IsCreated());
  EXPECT_FALSE(CQSRegKey().IsCreated());
  EXPECT_FALSE(CQSRegKey(kUnknown, path("There").c_str()).IsCreated());
}

TEST_F(RegKey, KeysOfUnknownRootsFailEverywhere) {
  for (const enumRegRoot root : {REG_ROOT_NONE, kUnknown, static_cast<enumRegRoot>(-1)}) {
    CQSRegValue value(root, "A\\B", "v");
    CQSRegKey key(root, "A\\B");
    CQSRegValue::e_data_struct data;
    std::string name;
    EXPECT_EQ(value.Read(data), m_facts.unknownRoot) << root;
    EXPECT_EQ(value.Write("x"), m_facts.unknownRoot) << root;
    EXPECT_EQ(value.Delete("v"), m_facts.unknownRoot) << root;
    EXPECT_EQ(key.DeleteKey(false), m_facts.unknownRoot) << root;
    EXPECT_EQ(key.DeleteKey(true), m_facts.unknownRoot) << root;
    EXPECT_EQ(CQSRegEnumKey(key).GetFirst(name), m_facts.unknownRoot) << root;
    EXPECT_EQ(CQSRegEnumValue(key).GetFirst(name), m_facts.unknownRoot) << root;
  }
}

TEST_F(RegKey, DeletesWhatHasNoSubKeysAndAllBelowWhenAsked) {
  for (const char* below : {"T\\A\\B\\C", "T\\A\\D", "T\\E", "U\\F"}) {
    make(below);
  }
  EXPECT_EQ(key("T").DeleteKey(false), m_facts.keyHasSubKeys);
  EXPECT_EQ(namesOf(CQSRegEnumKey(key("T"))), (std::vector<std::string>{"A", "E"}));
  EXPECT_EQ(key("T\\E").DeleteKey(false), 0);
  EXPECT_EQ(key("T").DeleteKey(true), 0);
  EXPECT_EQ(namesOf(CQSRegEnumKey(key(""))), std::vector<std::string>{"U"});
  EXPECT_EQ(key("T").DeleteKey(true), LTLib::resultFromSystemError(m_facts.missing));
  EXPECT_EQ(key("T").DeleteKey(false), LTLib::resultFromSystemError(m_facts.missing));
}

TEST_F(RegKey, DeletesAHundredLevels) {
  std::string deep = "T";
  for (int level = 0; level < 100; ++level) {
    deep += "\\L";
  }
  make(deep);
  EXPECT_EQ(key("T").DeleteKey(true), 0);
  EXPECT_EQ(namesOf(CQSRegEnumKey(key(""))), std::vector<std::string>());
}

// A sub-key's name goes through the expansion, so that it may lead to another key or to none. The
// walk stops there, whatever the name leads to, and nothing outside the key is touched.
TEST_F(RegKey, RecursiveDeletionStopsAtANameThatMeansAnotherKey) {
  const ScopedVariable empty("KeyTestEmpty", "");
  const ScopedVariable slashes("KeyTestSlashes", "\\\\");
  const ScopedVariable other("KeyTestOther", "Sibling");
  for (const char* name : {"%KeyTestEmpty%", "%KeyTestSlashes%", "%KeyTestOther%", "%Nowhere%"}) {
    make("T\\!First");  // the first by arrival and by order
    make("Kept");
    const std::string below = path(std::string("T\\") + name);
    void* made = nullptr;
    ASSERT_EQ(QSRegistryManager::GetInstance()->regCreateKey(LTLib::predefinedRootHandle(kUser),
                                                             below.c_str(), &made),
              0);
    EXPECT_EQ(QSRegistryManager::GetInstance()->regCloseKey(made), 0);
    if (std::string(name) == "%Nowhere%") {
      // No such variable: the name stays as it is, and is deleted under it.
      EXPECT_EQ(key("T").DeleteKey(true), 0);
    } else {
      EXPECT_LT(key("T").DeleteKey(true), 0) << name;
      EXPECT_EQ(namesOf(CQSRegEnumKey(key("T"))), std::vector<std::string>{name});
    }
    EXPECT_EQ(QSRegistryManager::GetInstance()->regDeleteKey(LTLib::predefinedRootHandle(kUser),
                                                             below.c_str()),
              std::string(name) == "%Nowhere%" ? m_facts.missing : 0);
    unsigned long number = 0;
    EXPECT_EQ(value("Kept", "made").Read(number), 0);
  }
}

TEST_F(RegKey, AKeyRightBelowARoot) {
  const std::string name = path("").substr(path("").find('\\') + 1);
  CQSRegKey top(kUser, name.c_str());
  CQSRegValue value(kUser, name.c_str(), "v");
  EXPECT_EQ(value.Write("text"), 0);
  EXPECT_EQ(CQSRegValue(kUser, (name + "\\Sub").c_str(), "v").Write("text"), 0);
  char* text = nullptr;
  std::string found;
  const bool full = m_facts.rootKeysHoldValues;
  EXPECT_EQ(value.Read(text), full ? 0 : kFailure);
  EXPECT_EQ(CQSRegEnumValue(top).GetFirst(found), full ? 0 : -1);
  EXPECT_EQ(CQSRegEnumKey(top).GetFirst(found), full ? 0 : -1);
  // What cannot be listed cannot be deleted with what is below it.
  EXPECT_EQ(top.DeleteKey(false), m_facts.keyHasSubKeys);
  EXPECT_EQ(top.DeleteKey(true), full ? 0 : m_facts.keyHasSubKeys);
  if (!full) {
    EXPECT_EQ(CQSRegKey(top, "Sub").DeleteKey(false), 0);
    EXPECT_EQ(top.DeleteKey(false), 0);
  }
}

}  // namespace
