// What a component library shows to the others.
#include <dlfcn.h>

#include "tests/component/component_fixture.h"

namespace LTLib::Testing {
namespace {

using IsolationTest = ComponentTest;

TEST_F(IsolationTest, NoLibrarySeesTheSymbolsOfAnother) {
  enterClass("Hosted", libraryPath("hosted"));
  ASSERT_NE(iqsDllLoader::Load("Hosted", nullptr), nullptr);
  void* const itself = ::dlopen(libraryPath("hosted").c_str(), RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(itself, nullptr);
  EXPECT_NE(::dlsym(itself, "useLibrary"), nullptr);
  EXPECT_EQ(::dlsym(RTLD_DEFAULT, "useLibrary"), nullptr);
  ::dlclose(itself);
}

}  // namespace
}  // namespace LTLib::Testing
