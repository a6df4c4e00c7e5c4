// A registry of the test program's own, and the component libraries of the tests.
#ifndef LTLIB_TESTS_COMPONENT_COMPONENT_FIXTURE_H
#define LTLIB_TESTS_COMPONENT_COMPONENT_FIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "ltlib/ltlib.h"
#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

/// The file of a test's component library.
[[nodiscard]] std::string libraryPath(const std::string& name);

/// Makes, changes or removes the entry of a class in the registry.
void enterClass(const std::string& id, const std::string& library);
void removeClass(const std::string& id);

class ComponentTest : public testing::Test {
 protected:
  ComponentTest();

  /// The store of the whole program, which is read once.
  static const TempFolder& folder();
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_COMPONENT_COMPONENT_FIXTURE_H
