// Libraries whose static objects throw. Each is loaded in a process of its own, which one that was
// not built for that spoils.
#include <memory>
#include <thread>

#include "tests/component/component_fixture.h"
#include "tests/support/child_process.h"

namespace LTLib::Testing {
namespace {

// How a load ends, with the system's reason where it fails.
std::string endOfLoad(const char* id) {
  char* text = nullptr;
  try {
    const bool loaded = iqsDllLoader::Load(id, &text) != nullptr;
    const std::unique_ptr<char[]> owner(text);
    return loaded ? "loads"
                  : (text != nullptr ? "fails: " : "no text: ") + reportClass(id)->loadFailure;
  } catch (const std::exception& thrown) {
    return std::string("throws: ") + thrown.what();
  }
}

const Scenario s_loader("throwing library", [](const std::vector<std::string>& libraries) {
  enterClass("Throws.Late", libraries[0]);
  enterClass("Throws.Early", libraries[0]);
  enterClass("Quiet", libraries[1]);
  tellParent(endOfLoad("Throws.Late"));
  tellParent(endOfLoad("Throws.Early"));
  std::thread([] { tellParent(endOfLoad("Quiet")); }).join();
  tellParent(endOfLoad("Quiet"));
  std::thread([quiet = iqsDllLoader::Load("Quiet", nullptr)] {
    while (reportClass("Quiet")->loadCount != 0) {
      iqsDllLoader::Unload(quiet);
    }
  }).join();
  tellParent(Stage::takeNotes());
  return 0;
});

using ThrowingLibraryTest = ComponentTest;

// Where the system's loader stops exceptions, a load just fails.
TEST_F(ThrowingLibraryTest, StaysFailedAndKeepsNobodyWaiting) {
  constexpr bool kLeave = LTLIB_TEST_EXCEPTIONS_LEAVE_LOADS;
  const char* const failed =
      kLeave ? "fails: an exception left its static objects: from a static object"
             : "fails: an exception left its static objects";
  for (const std::string library : {"throws", "throws_unguarded"}) {
    SCOPED_TRACE(library);
    const bool locked = kLeave && library == "throws_unguarded";
    ChildProcess child("throwing library", {libraryPath(library), libraryPath("quiet")});
    EXPECT_EQ(child.hear(), kLeave ? "throws: from a static object" : failed);
    EXPECT_EQ(child.hear(), failed);
    EXPECT_EQ(child.hear(), locked ? "fails: the system's loader is locked for all threads but one "
                                     "since an exception left it"
                                   : "loads");
    EXPECT_EQ(child.hear(), "loads");
    EXPECT_EQ(child.hear(), locked ? "quiet comes" : "quiet comes, quiet goes");
    EXPECT_EQ(child.wait(), 0);
  }
}

}  // namespace
}  // namespace LTLib::Testing
