// Copies of the library in folders of their own: which backend each picks. A process per case,
// since the choice stands for the life of a process.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "ltlib/registry/registry_manager.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using LTLib::Testing::ChildProcess;
using LTLib::Testing::Scenario;

enum Answer { kNoAnswer = 3, kSystem, kFile };

// Loads the library of the given path and asks it, past the copy that is linked in.
int askBackend(const std::vector<std::string>& arguments) {
  const HMODULE library = LoadLibraryA(arguments[0].c_str());
  if (library == nullptr) {
    return kNoAnswer;
  }
  const auto getInstance = reinterpret_cast<QSRegistryManager* (*)()>(
      reinterpret_cast<void*>(GetProcAddress(library, "_ZN17QSRegistryManager11GetInstanceEv")));
  const std::string pathname = getInstance()->GetConfigurationPathname(REG_ROOT_USERS);
  return pathname.empty() ? kSystem : kFile;
}
const Scenario s_backend("backend", askBackend);

TEST(BackendChoice, GoesByTheMarkerBesideTheLibrary) {
  const struct {
    const char* label;
    const char* folder;
    const char* library;
    const char* marker;  // none if null
    Answer expected;
  } cases[] = {
      {"no marker", "plain", "ltlib.dll", nullptr, kSystem},
      {"empty marker", "plain", "ltlib.dll", "plain/registry.dat", kFile},
      {"letters of both cases", "Mixed Case", "LTLib.DLL", "Mixed Case/Registry.DAT", kFile},
      {"marker elsewhere", "plain", "ltlib.dll", "registry.dat", kSystem},
      {"folder with the library's name", "old ltlib.dll x", "ltlib.dll",
       "old ltlib.dll x/registry.dat", kSystem},
      {"and the marker where that name begins", "old ltlib.dll x", "ltlib.dll", "old registry.dat",
       kFile},
      {"renamed library", "plain", "other.dll", nullptr, kFile},
  };
  const fs::path built = fs::path(LTLib::Testing::thisProgram()).parent_path() / LTLIB_DLL;
  for (const auto& row : cases) {
    const LTLib::Testing::TempFolder temp;
    const fs::path folder = temp.path(row.folder);
    fs::create_directory(folder);
    fs::copy_file(built, folder / row.library);
    if (row.marker != nullptr) {
      temp.write(row.marker, "");
    }
    EXPECT_EQ(ChildProcess("backend", {(folder / row.library).string()}).wait(), row.expected)
        << row.label;
  }
}

}  // namespace
