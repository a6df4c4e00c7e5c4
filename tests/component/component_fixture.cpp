#include "tests/component/component_fixture.h"

namespace LTLib::Testing {
namespace {

CQSRegValue entryOf(const std::string& id) {
  return {REG_ROOT_LOCAL_MACHINE, ("%CLASSID%\\" + id).c_str(), "InprocServer"};
}

}  // namespace

std::string libraryPath(const std::string& name) {
  return LTLIB_TEST_LIBRARIES "/" + name + LTLIB_TEST_LIBRARY_SUFFIX;
}

void enterClass(const std::string& id, const std::string& library) {
  ASSERT_EQ(entryOf(id).Write(library.c_str()), 0) << id;
}

void removeClass(const std::string& id) {
  ASSERT_EQ(entryOf(id).Delete(nullptr), 0) << id;
}

ComponentTest::ComponentTest() {
  static const ScopedEnvironment store("HKEY_LOCAL_MACHINE", folder().path("HKLM.cfg"));
}

const TempFolder& ComponentTest::folder() {
  static const TempFolder s_folder;
  return s_folder;
}

}  // namespace LTLib::Testing
