// Loading and unloading of real component libraries, and the plain form.
#include "ltlib/component/dll_loader.h"

#include <filesystem>
#include <memory>
#include <optional>

#include "tests/component/component_fixture.h"
#include "tests/component/libraries/stage.h"
#include "tests/support/mapped_library.h"

namespace LTLib::Testing {
namespace {

using Notes = std::vector<std::string>;

// The text that Load stores; empty when it stores none.
std::string failureOf(const char* id, iqsDllLoader::FactoryDll** record = nullptr) {
  char* text = nullptr;
  iqsDllLoader::FactoryDll* const loaded = iqsDllLoader::Load(id, &text);
  const std::unique_ptr<char[]> owner(text);
  EXPECT_EQ(loaded == nullptr, text != nullptr);
  if (record != nullptr) {
    *record = loaded;
  }
  return text != nullptr ? text : "";
}

// "count loaded factory" of a class, with a dash for what it lacks.
std::string stateOf(const char* id) {
  const std::optional<ClassReport> report = reportClass(id);
  if (!report) {
    return "none";
  }
  return std::to_string(report->loadCount) + (report->isLoaded ? " loaded" : " -") +
         (report->hasFactory ? " factory" : " -");
}

class DllLoaderTest : public ComponentTest {
 protected:
  DllLoaderTest() {
    enterClass("Pair.Plain", libraryPath("component_pair"));
    enterClass("Pair.Unknown", libraryPath("component_pair"));
    Stage::takeNotes();
  }
};

TEST_F(DllLoaderTest, LoadsAndUnloadsTheLibraryAsOftenAsTold) {
  EXPECT_FALSE(isMapped(libraryPath("component_pair")));
  iqsDllLoader::FactoryDll* const record = iqsDllLoader::Load("Pair.Plain", nullptr);
  ASSERT_NE(record, nullptr);
  const std::string sameId = "Pair.Plain";
  EXPECT_EQ(iqsDllLoader::Load(sameId.c_str(), nullptr), record);
  EXPECT_EQ(stateOf("Pair.Plain"), "2 loaded factory");
  EXPECT_EQ(stateOf("Pair.Unknown"), "0 - factory");
  EXPECT_TRUE(isMapped(libraryPath("component_pair")));
  EXPECT_EQ(Stage::takeNotes(), Notes{"pair comes"});

  iqsDllLoader::Unload(record);
  EXPECT_EQ(stateOf("Pair.Plain"), "1 loaded factory");
  EXPECT_EQ(Stage::takeNotes(), Notes{});
  iqsDllLoader::Unload(record);
  EXPECT_EQ(stateOf("Pair.Plain"), "0 - -");
  EXPECT_EQ(stateOf("Pair.Unknown"), "0 - -");
  EXPECT_EQ(Stage::takeNotes(), Notes{"pair goes"});
  EXPECT_FALSE(isMapped(libraryPath("component_pair")));
  iqsDllLoader::Unload(record);
  EXPECT_EQ(stateOf("Pair.Plain"), "0 - -");
  EXPECT_EQ(iqsDllLoader::CreateInstance(record), nullptr);
}

TEST_F(DllLoaderTest, ALibraryComesBackWithFreshStaticsAtTheOldPath) {
  for (int round = 0; round < 3; ++round) {
    iqsDllLoader::FactoryDll* const record = iqsDllLoader::Load("Pair.Plain", nullptr);
    ASSERT_NE(record, nullptr);
    enterClass("Pair.Plain", "/nowhere");
    auto* const instance = static_cast<int*>(iqsDllLoader::CreateInstance(record));
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(*instance, 1);
    iqsDllLoader::ReleaseInstance(record, instance);
    iqsDllLoader::Unload(record);
    EXPECT_EQ(Stage::takeNotes(), (Notes{"pair comes", "plain ends", "pair goes"}));
  }
}

TEST_F(DllLoaderTest, TheLibraryStaysWhileAnotherClassHoldsIt) {
  iqsDllLoader::FactoryDll* const plain = iqsDllLoader::Load("Pair.Plain", nullptr);
  iqsDllLoader::FactoryDll* const unknown = iqsDllLoader::Load("Pair.Unknown", nullptr);
  ASSERT_NE(unknown, nullptr);
  EXPECT_NE(plain, unknown);
  iqsDllLoader::Unload(plain);
  EXPECT_EQ(stateOf("Pair.Plain"), "0 - factory");
  EXPECT_EQ(stateOf("Pair.Unknown"), "1 loaded factory");
  void* const instance = iqsDllLoader::CreateInstance(plain);
  EXPECT_NE(instance, nullptr);
  iqsDllLoader::ReleaseInstance(plain, instance);
  iqsDllLoader::Unload(unknown);
  EXPECT_EQ(Stage::takeNotes(), (Notes{"pair comes", "plain ends", "pair goes"}));
}

TEST_F(DllLoaderTest, OneFileUnderTwoPathsIsOneLibrary) {
  namespace fs = std::filesystem;
  const fs::path real = libraryPath("component_quiet");
  enterClass("Quiet.Straight", real.string());
  enterClass("Quiet.Winding", (real.parent_path() / "." / real.filename()).string());
  iqsDllLoader::FactoryDll* const straight = iqsDllLoader::Load("Quiet.Straight", nullptr);
  iqsDllLoader::FactoryDll* const winding = iqsDllLoader::Load("Quiet.Winding", nullptr);
  EXPECT_NE(straight, winding);
  EXPECT_EQ(Stage::takeNotes(), Notes{"quiet comes"});
  iqsDllLoader::Unload(straight);
  EXPECT_EQ(Stage::takeNotes(), Notes{});
  iqsDllLoader::Unload(winding);
  EXPECT_EQ(Stage::takeNotes(), Notes{"quiet goes"});
}

TEST_F(DllLoaderTest, ALibraryWithoutRegistrarsLoadsAndMakesNothing) {
  enterClass("Quiet.Class", libraryPath("component_quiet"));
  iqsDllLoader::FactoryDll* record = nullptr;
  EXPECT_EQ(failureOf("Quiet.Class", &record), "");
  EXPECT_EQ(stateOf("Quiet.Class"), "1 loaded -");
  EXPECT_EQ(iqsDllLoader::CreateInstance(record), nullptr);
  int untouched = 5;
  iqsDllLoader::ReleaseInstance(record, &untouched);
  EXPECT_EQ(untouched, 5);
  char* text = nullptr;
  EXPECT_EQ(iqsDllLoader::iqsGetCreateInstance("Quiet.Class", &text), nullptr);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(stateOf("Quiet.Class"), "2 loaded -");
  iqsDllLoader::Unload(record);
  iqsDllLoader::Unload(record);
  EXPECT_FALSE(isMapped(libraryPath("component_quiet")));
}

TEST_F(DllLoaderTest, NullArgumentsDoNothing) {
  char* text = nullptr;
  EXPECT_EQ(iqsDllLoader::Load(nullptr, &text), nullptr);
  EXPECT_EQ(iqsDllLoader::iqsGetCreateInstance(nullptr, &text), nullptr);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(iqsDllLoader::CreateInstance(nullptr), nullptr);
  int instance = 0;
  iqsDllLoader::ReleaseInstance(nullptr, &instance);
  iqsDllLoader::Unload(nullptr);
  iqsDllLoader::FactoryDll* const record = iqsDllLoader::Load("Pair.Plain", nullptr);
  iqsDllLoader::ReleaseInstance(record, nullptr);
  iqsDllLoader::Unload(record);
  EXPECT_EQ(Stage::takeNotes(), (Notes{"pair comes", "pair goes"}));
  EXPECT_FALSE(reportClass(nullptr));
}

TEST_F(DllLoaderTest, AMissingClassIsFoundAsSoonAsItHasAnEntry) {
  EXPECT_EQ(iqsDllLoader::Load("Absent.Class", nullptr), nullptr);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(failureOf("Absent.Class"), "No DLL registered for CLSID Absent.Class");
    EXPECT_EQ(stateOf("Absent.Class"), "none");
  }
  enterClass("Absent.Class", libraryPath("component_quiet"));
  iqsDllLoader::FactoryDll* record = nullptr;
  EXPECT_EQ(failureOf("Absent.Class", &record), "");
  iqsDllLoader::Unload(record);
}

TEST_F(DllLoaderTest, AnEntryThatIsNoTextIsNone) {
  CQSRegValue(REG_ROOT_LOCAL_MACHINE, "%CLASSID%\\Number.Class", "InprocServer").Write(7ul);
  EXPECT_EQ(failureOf("Number.Class"), "No DLL registered for CLSID Number.Class");
}

TEST_F(DllLoaderTest, EachFailedLoadTriesAgainAndTellsTheSystemsReason) {
  const std::string noLibrary = folder().write("no_library", "no library\n");
  const struct {
    const char* id;
    std::string path;
  } cases[] = {{"Broken.Absent", folder().path("absent.library")},
               {"Broken.Text", noLibrary},
               {"Broken.Folder", folder().path()},
               {"Broken.Variable", "%SharedRoot%"},
               {"Broken.Empty", ""}};
  for (const auto& row : cases) {
    SCOPED_TRACE(row.id);
    enterClass(row.id, row.path);
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(failureOf(row.id), "DllLoader cannot load " + row.path + " for CLSID " + row.id);
      EXPECT_EQ(stateOf(row.id), "0 - -");
      EXPECT_EQ(reportClass(row.id)->library, row.path);
      EXPECT_FALSE(reportClass(row.id)->loadFailure.empty());
    }
  }
  std::filesystem::copy(libraryPath("component_quiet"), folder().path("absent.library"));
  iqsDllLoader::FactoryDll* record = nullptr;
  EXPECT_EQ(failureOf("Broken.Absent", &record), "");
  EXPECT_EQ(reportClass("Broken.Absent")->loadFailure, "");
  iqsDllLoader::Unload(record);
}

TEST_F(DllLoaderTest, AFailedLoadKeepsATextAndAMissingEntryReplacesIt) {
  enterClass("Broken.Empty", "");
  char first[] = "first";
  char* text = first;
  EXPECT_EQ(iqsDllLoader::Load("Broken.Empty", &text), nullptr);
  EXPECT_EQ(text, first);
  EXPECT_EQ(iqsDllLoader::Load("Entry.Missing", &text), nullptr);
  ASSERT_NE(text, first);
  EXPECT_STREQ(text, "No DLL registered for CLSID Entry.Missing");
  delete[] text;
}

TEST_F(DllLoaderTest, TextsAreCutAt1023Characters) {
  const std::string opening = "No DLL registered for CLSID ";
  const std::string fits(1023 - opening.size(), 'i');
  EXPECT_EQ(failureOf(fits.c_str()), opening + fits);
  EXPECT_EQ(failureOf((fits + "j").c_str()), opening + fits);
  const std::string path = "/" + std::string(2000, 'p');
  enterClass("Long.Path", path);
  EXPECT_EQ(failureOf("Long.Path"), ("DllLoader cannot load " + path).substr(0, 1023));
}

TEST_F(DllLoaderTest, ThePercentSignsOfAnIdentifierAreReferences) {
  QSConfigVariableManager::GetInstance()->AddVariable("Inner", "Expanded");
  enterClass("Percent.Expanded", libraryPath("component_quiet"));
  iqsDllLoader::FactoryDll* record = nullptr;
  EXPECT_EQ(failureOf("Percent.%Inner%", &record), "");
  iqsDllLoader::Unload(record);
  EXPECT_EQ(failureOf("Percent.%Undefined%"), "No DLL registered for CLSID Percent.%Undefined%");
  EXPECT_EQ(failureOf("100%"), "No DLL registered for CLSID 100%");
  EXPECT_EQ(stateOf("Percent.%Inner%"), "0 - -");
  EXPECT_EQ(stateOf("Percent.Expanded"), "none");
}

}  // namespace
}  // namespace LTLib::Testing
