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

void enter(const char* id, const std::string& library) {
  CQSRegValue(REG_ROOT_LOCAL_MACHINE, (std::string("%CLASSID%\\") + id).c_str(), "InprocServer")
      .Write(library.c_str());
}

const Scenario s_loader("throwing library", [](const std::vector<std::string>& libraries) {
  enter("Throws.Late", libraries[0]);
  enter("Throws.Early", libraries[0]);
  enter("Quiet", libraries[1]);
  for (const char* id : {"Throws.Late", "Throws.Late", "Throws.Early"}) {
    tellParent(endOfLoad(id));
  }
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
  const std::string failed = std::string("fails: an exception left its static objects") +
                             (kLeave ? ": from a static object" : "");
  struct Case {
    const char* library;
    std::string onAnotherThread;
    std::string notes;
  };
  const Case cases[] = {
      {"throws", "loads", "quiet comes, quiet goes"},
      kLeave ? Case{"throws_unguarded",
                    "fails: the system's loader is locked for all threads but one since an "
                    "exception left it",
                    "quiet comes"}
             : Case{"throws_unguarded", "loads", "quiet comes, quiet goes"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.library);
    ChildProcess child("throwing library", {libraryPath(row.library), libraryPath("quiet")});
    EXPECT_EQ(child.hear(), kLeave ? "throws: from a static object" : failed);
    EXPECT_EQ(child.hear(), failed);
    EXPECT_EQ(child.hear(), failed);
    EXPECT_EQ(child.hear(), row.onAnotherThread);
    EXPECT_EQ(child.hear(), "loads");
    EXPECT_EQ(child.hear(), row.notes);
    EXPECT_EQ(child.wait(), 0);
  }
}

}  // namespace
}  // namespace LTLib::Testing
