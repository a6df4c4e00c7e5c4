// The variables and the registry objects before the library's own static objects are made, and
// after its teardown.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "ltlib/registry/reg_enum.h"
#include "ltlib/registry/reg_value.h"
#include "ltlib/variables/variable_manager.h"
#include "ltlib/variables/variable_report.h"
#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace {

using LTLib::kFailure;

QSREGISTRYVARIABLE s_early[] = {{"Early", "%CompanyName%"}, {nullptr, nullptr}};
QSREGISTRYVARIABLE s_late[] = {{"Late", ""}, {nullptr, nullptr}};

void demand(bool holds, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "after the teardown: %s\n", what);
    std::_Exit(EXIT_FAILURE);
  }
}

void useEverythingLate(CQSRegKey& key, CQSRegValue& value) {
  std::string text = "%CompanyName%";
  std::string name;
  std::vector<LTLib::ExpansionStep> steps;
  unsigned long number = 0;
  CQSRegValue::e_data_struct data;
  const QSVariableRegistrar late(s_late);
  demand(QSConfigVariableManager::GetInstance() == nullptr, "no manager of variables");
  demand(QSExpandString(text) == kFailure && text == "%CompanyName%", "expansion");
  demand(LTLib::traceExpansion(text, steps) == kFailure && LTLib::reportVariables().empty(),
         "reports");
  demand(QSRegistryManager::GetInstance() == nullptr, "no manager of the registry");
  demand(key.SetKey(REG_ROOT_USERS, "A\\B") == kFailure, "setting a key");
  demand(std::string(CQSRegKey(key).GetPath()) == "A\\B", "copying a key");
  demand(!key.IsCreated(), "opening a key");
  demand(key.DeleteKey(false) == kFailure && key.DeleteKey(true) == kFailure, "deleting a key");
  demand(value.Read(data) == kFailure && value.Read(number) == kFailure, "reading");
  demand(value.Write("text") == kFailure && value.Write(1ul) == kFailure, "writing");
  demand(value.Delete(nullptr) == kFailure, "deleting a value");
  demand(CQSRegEnumKey(key).GetFirst(name) == kFailure, "walking over keys");
  demand(CQSRegEnumValue(key).GetFirst(name) == kFailure, "walking over values");
  demand(GetConfigurationPathname(REG_ROOT_USERS).empty(), "the store's name");
  demand(SaveConfiguration(REG_ROOT_USERS) == kFailure, "saving");
  demand(SaveConfiguration(REG_ROOT_USERS, text) == kFailure, "saving to a file");
}

// The first static object of the program: made before those of the library, destroyed after them.
struct Outermost {
  Outermost() { const QSVariableRegistrar early(s_early); }
  ~Outermost() { useEverythingLate(key, value); }

  CQSRegKey key;
  CQSRegValue value;
};

__attribute__((init_priority(101))) Outermost s_outermost;

class Lifetime : public testing::Test {
  const LTLib::Testing::TempFolder m_folder;
  const LTLib::Testing::ScopedEnvironment m_users{"HKEY_USERS", m_folder.path("users.cfg")};
  const LTLib::Testing::ScopedEnvironment m_machine{"HKEY_LOCAL_MACHINE",
                                                    m_folder.path("machine.cfg")};
};

TEST_F(Lifetime, ObjectsOutliveTheLibrary) {
  EXPECT_EQ(s_outermost.key.SetKey(REG_ROOT_USERS, "A\\B"), 0);
  EXPECT_EQ(s_outermost.value.SetKey(s_outermost.key), 0);
  EXPECT_EQ(s_outermost.value.SetName("v"), 0);
  EXPECT_EQ(s_outermost.value.Write("text"), 0);
}

TEST_F(Lifetime, AnEarlyRegistrarsTableStays) {
  std::string text = "%Early%";
  EXPECT_EQ(QSExpandString(text), 0);
  EXPECT_EQ(text, "Tarn Quillmere");
}

}  // namespace
