// A host that links nothing of the library and loads a component late.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>

#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"
#include "tests/support/threads.h"

namespace LTLib::Testing {
namespace {

// Until none is left for thread-local objects at fixed places. Each copy is a library of its own.
bool useUpStaticTls(const TempFolder& folder) {
  for (int copy = 0; copy < 1000; ++copy) {
    const std::string path = folder.path("copy" + std::to_string(copy));
    std::filesystem::copy_file(LTLIB_TEST_TAKES_STATIC_TLS, path);
    if (::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL) == nullptr) {
      return true;
    }
  }
  return false;
}

TEST(Host, UsesAComponentThatItLoadsLate) {
  const TempFolder folder;
  const ScopedEnvironment user("HKEY_CURRENT_USER", folder.path("HKCU.cfg"));
  const ScopedEnvironment machine("HKEY_LOCAL_MACHINE", folder.path("HKLM.cfg"));
  ASSERT_TRUE(useUpStaticTls(folder));
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
