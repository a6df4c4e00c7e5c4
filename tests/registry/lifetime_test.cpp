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
  CQSRegValue::e_data_struct data;
  const QSVariableRegistrar late(s_late);
  for (const QSResult result :
       {QSExpandString(text), LTLib::traceExpansion(text, steps),
        key.SetKey(REG_ROOT_USERS, "A\\B"), key.DeleteKey(false), key.DeleteKey(true),
        value.Read(data), value.Write("text"), value.Delete(nullptr),
        CQSRegEnumKey(key).GetFirst(name), CQSRegEnumValue(key).GetFirst(name)}) {
    demand(result == kFailure, "an operation succeeds");
  }
  demand(text == "%CompanyName%" && LTLib::reportVariables().empty(), "variables");
  demand(std::string(CQSRegKey(key).GetPath()) == "A\\B" && !key.IsCreated(), "a key");
  demand(SaveConfiguration(REG_ROOT_USERS) == kFailure &&
             SaveConfiguration(REG_ROOT_USERS, text) == kFailure &&
             GetConfigurationPathname(REG_ROOT_USERS).empty(),
         "a store");
}

// The first static object of the program: made before those of the library, destroyed after them.
struct Outermost {
  Outermost() { const QSVariableRegistrar early(s_early); }
  ~Outermost() { useEverythingLate(key, value); }

  CQSRegKey key;
  CQSRegValue value;
};

__attribute__((init_priority(101))) Outermost s_outermost;

TEST(Lifetime, EarlyObjectsWorkAndOutliveTheLibrary) {
  const LTLib::Testing::TempFolder folder;
  const LTLib::Testing::ScopedStores stores(&folder);
  EXPECT_EQ(s_outermost.key.SetKey(REG_ROOT_USERS, "A\\B"), 0);
  EXPECT_EQ(s_outermost.value.SetKey(s_outermost.key), 0);
  EXPECT_EQ(s_outermost.value.SetName("v"), 0);
  EXPECT_EQ(s_outermost.value.Write("text"), 0);
  std::string text = "%Early%";
  EXPECT_EQ(QSExpandString(text), 0);
  EXPECT_EQ(text, "Tarn Quillmere");
}

}  // namespace
