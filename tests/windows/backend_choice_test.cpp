// Copies of the library in folders of their own: which backend each picks. A process per case,
// since the choice stands for the life of a process.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <tuple>

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
  // Folder, library, marker if there is one, and the backend.
  const std::tuple<const char*, const char*, const char*, Answer> cases[] = {
      {"plain", "ltlib.dll", nullptr, kSystem},
      {"plain", "ltlib.dll", "plain/registry.dat", kFile},
      {"Mixed Case", "LTLib.DLL", "Mixed Case/Registry.DAT", kFile},
      // The library's name is replaced where it comes first.
      {"old ltlib.dll x", "ltlib.dll", "old ltlib.dll x/registry.dat", kSystem},
      {"old ltlib.dll x", "ltlib.dll", "old registry.dat", kFile},
      {"plain", "other.dll", nullptr, kFile},
  };
  const fs::path built = fs::path(LTLib::Testing::thisProgram()).parent_path() / LTLIB_DLL;
  for (const auto& [folderName, libraryName, marker, expected] : cases) {
    const LTLib::Testing::TempFolder temp;
    const fs::path library = fs::path(temp.path(folderName)) / libraryName;
    fs::create_directory(library.parent_path());
    fs::copy_file(built, library);
    if (marker != nullptr) {
      temp.write(marker, "");
    }
    EXPECT_EQ(ChildProcess("backend", {library.string()}).wait(), expected)
        << library << ' ' << (marker != nullptr ? marker : "without a marker");
  }
}

}  // namespace
