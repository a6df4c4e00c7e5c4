// A host that links nothing of the library and loads a component late.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>

#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"
#include "tests/support/threads.h"

namespace LTLib::Testing {
namespace {

TEST(Host, UsesAComponentThatItLoadsLate) {
  const TempFolder folder;
  const ScopedEnvironment user("HKEY_CURRENT_USER", folder.path("HKCU.cfg"));
  const ScopedEnvironment machine("HKEY_LOCAL_MACHINE", folder.path("HKLM.cfg"));
  void* const component = ::dlopen(LTLIB_TEST_HOSTED, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(component, nullptr) << ::dlerror();
  const auto useLibrary = reinterpret_cast<bool (*)()>(::dlsym(component, "useLibrary"));
  ASSERT_NE(useLibrary, nullptr);
  std::atomic<int> uses{0};
  runTogether(3, [&](int) { uses += useLibrary() ? 1 : 0; });
  EXPECT_EQ(uses, 3);
}

}  // namespace
}  // namespace LTLib::Testing
