// The count of loads at its top, which no test reaches by loading.
#include <gtest/gtest.h>

#include <limits>

#include "ltlib/component/factory_dll.h"
#include "ltlib/registry/reg_value.h"
#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {
namespace {

TEST(LoadCount, ALibraryThatWasLoadedTooOftenStaysForGood) {
  constexpr std::uint32_t kTop = std::numeric_limits<std::uint32_t>::max();
  const TempFolder folder;
  const ScopedEnvironment store("HKEY_LOCAL_MACHINE", folder.path("HKLM.cfg"));
  CQSRegValue(REG_ROOT_LOCAL_MACHINE, "%CLASSID%\\Count.Class", "InprocServer")
      .Write(LTLIB_TEST_ANY_LIBRARY);
  iqsDllLoader::FactoryDll* const record = iqsDllLoader::Load("Count.Class", nullptr);
  ASSERT_NE(record, nullptr);
  void* const module = record->module;
  record->loadCount = kTop - 1;
  iqsDllLoader::Unload(record);
  EXPECT_EQ(record->loadCount, kTop - 2);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(iqsDllLoader::Load("Count.Class", nullptr), record);
  }
  EXPECT_EQ(record->loadCount, kTop);
  iqsDllLoader::Unload(record);
  EXPECT_EQ(record->loadCount, kTop);
  EXPECT_EQ(record->module, module);
}

}  // namespace
}  // namespace LTLib::Testing
