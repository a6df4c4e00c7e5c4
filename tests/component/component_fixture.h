// A registry of the test program's own, and the component libraries of the tests.
#ifndef LTLIB_TESTS_COMPONENT_COMPONENT_FIXTURE_H
#define LTLIB_TESTS_COMPONENT_COMPONENT_FIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "ltlib/ltlib.h"
#include "tests/component/libraries/stage.h"
#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

/// The file of a test's component library.
inline std::string libraryPath(const std::string& name) {
  return LTLIB_TEST_LIBRARIES "/component_" + name + LTLIB_TEST_LIBRARY_SUFFIX;
}

/// Makes or changes the entry of a class in the registry.
inline void enterClass(const std::string& id, const std::string& library) {
  CQSRegValue entry(REG_ROOT_LOCAL_MACHINE, ("%CLASSID%\\" + id).c_str(), "InprocServer");
  EXPECT_EQ(entry.Write(library.c_str()), 0) << id;
}

/// "count loaded factory" of a class, with a dash for what it lacks.
inline std::string stateOf(const char* id) {
  const std::optional<ClassReport> report = reportClass(id);
  return !report ? "none"
                 : std::to_string(report->loadCount) + (report->isLoaded ? " loaded" : " -") +
                       (report->hasFactory ? " factory" : " -");
}

/// Loads, creates, releases and unloads an object of the plain form; null when there was none.
inline void* usePlain(const char* id) {
  iqsDllLoader::FactoryDll* const record = iqsDllLoader::Load(id, nullptr);
  void* const instance = iqsDllLoader::CreateInstance(record);
  iqsDllLoader::ReleaseInstance(record, instance);
  iqsDllLoader::Unload(record);
  return instance;
}

class ComponentTest : public testing::Test {
 protected:
  ComponentTest() {
    static const ScopedEnvironment s_store("HKEY_LOCAL_MACHINE", folder().path("HKLM.cfg"));
    enterClass("Pair.Plain", libraryPath("pair"));
    enterClass("Pair.Unknown", libraryPath("pair"));
    Stage::takeNotes();
  }

  /// The folder of the store, which the whole program has in common: a process reads it once.
  static const TempFolder& folder() {
    static const TempFolder s_folder;
    return s_folder;
  }
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_COMPONENT_COMPONENT_FIXTURE_H
