// Loading and unloading of real component libraries, the plain form, and registrars.
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

#include "ltlib/component/factory_dll.h"
#include "tests/component/component_fixture.h"

namespace LTLib::Testing {
namespace {

using FactoryDll = iqsDllLoader::FactoryDll;
using Registrar = iqsDllLoader::Registrar;

class DllLoaderTest : public ComponentTest {
 protected:
  // The text that a load stores; empty when it stores none. A load that succeeds is given back.
  static std::string failureOf(const std::string& id) {
    char* text = nullptr;
    FactoryDll* const record = iqsDllLoader::Load(id.c_str(), &text);
    const std::unique_ptr<char[]> owner(text);
    EXPECT_EQ(record == nullptr, text != nullptr);
    iqsDllLoader::Unload(record);
    return text != nullptr ? text : "";
  }
};

TEST_F(DllLoaderTest, ALibraryGoesWithItsLastLoadAndComesBackWithFreshStatics) {
  for (int round = 0; round < 2; ++round) {
    FactoryDll* const record = iqsDllLoader::Load("Pair.Plain", nullptr);
    ASSERT_NE(record, nullptr);
    enterClass("Pair.Plain", "/nowhere");
    EXPECT_EQ(iqsDllLoader::Load(std::string("Pair.Plain").c_str(), nullptr), record);
    EXPECT_EQ(stateOf("Pair.Plain"), "2 loaded factory");
    EXPECT_EQ(stateOf("Pair.Unknown"), "0 - factory");
    void* const instance = iqsDllLoader::CreateInstance(record);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(*static_cast<int*>(instance), 1);
    iqsDllLoader::ReleaseInstance(record, nullptr);
    iqsDllLoader::ReleaseInstance(record, instance);
    iqsDllLoader::Unload(record);
    EXPECT_EQ(stateOf("Pair.Plain"), "1 loaded factory");
    EXPECT_EQ(Stage::takeNotes(), "pair comes, plain ends");
    iqsDllLoader::Unload(record);
    iqsDllLoader::Unload(record);
    EXPECT_EQ(stateOf("Pair.Plain"), "0 - -");
    EXPECT_EQ(stateOf("Pair.Unknown"), "0 - -");
    EXPECT_EQ(Stage::takeNotes(), "pair goes");
    EXPECT_EQ(iqsDllLoader::CreateInstance(record), nullptr);
  }
}

TEST_F(DllLoaderTest, ALibraryStaysWhileAnotherClassHoldsIt) {
  FactoryDll* const plain = iqsDllLoader::Load("Pair.Plain", nullptr);
  FactoryDll* const unknown = iqsDllLoader::Load("Pair.Unknown", nullptr);
  iqsDllLoader::Unload(plain);
  EXPECT_EQ(stateOf("Pair.Plain") + stateOf("Pair.Unknown"), "0 - factory1 loaded factory");
  iqsDllLoader::Unload(unknown);
  EXPECT_EQ(Stage::takeNotes(), "pair comes, pair goes");
}

TEST_F(DllLoaderTest, NullArgumentsDoNothingAndATextIsReplacedWithoutAnEntry) {
  enterClass("Broken.Kept", "");
  char first[] = "first";
  char* text = first;
  EXPECT_EQ(iqsDllLoader::Load(nullptr, &text), nullptr);
  EXPECT_EQ(iqsDllLoader::iqsGetCreateInstance(nullptr, &text), nullptr);
  EXPECT_EQ(iqsDllLoader::Load("Broken.Kept", &text), nullptr);
  EXPECT_EQ(iqsDllLoader::Load("No.Entry", nullptr), nullptr);
  EXPECT_EQ(text, first);
  EXPECT_EQ(iqsDllLoader::Load("No.Entry", &text), nullptr);
  ASSERT_NE(text, first);
  delete[] text;
  EXPECT_EQ(iqsDllLoader::CreateInstance(nullptr), nullptr);
  iqsDllLoader::ReleaseInstance(nullptr, first);
  iqsDllLoader::Unload(nullptr);
}

// Each load asks anew: an entry or a library that is there by then is found.
TEST_F(DllLoaderTest, AFailedLoadHasATextOf1023CharactersAtMost) {
  const std::string absent = folder().path("absent.library");
  CQSRegValue(REG_ROOT_LOCAL_MACHINE, "%CLASSID%\\A.Number", "InprocServer").Write(7ul);
  const std::pair<std::string, std::optional<std::string>> cases[] = {
      {"Absent.Class", {}},
      {"A.Number", {}},
      {"A.%Reference%", {}},
      {"100%", {}},
      {std::string(996, 'i'), {}},
      {"A.LongPath", "/" + std::string(2000, 'p')},
      {"No.File", absent},
      {"No.Image", folder().write("no_library", "no library\n")},
      {"A.Folder", folder().path()},
      {"A.Variable", "%SharedRoot%"},
      {"Nothing", ""},
  };
  for (const auto& [id, path] : cases) {
    std::string text = "No DLL registered for CLSID " + id;
    if (path) {
      enterClass(id, *path);
      text = "DllLoader cannot load " + *path + " for CLSID " + id;
    }
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(failureOf(id), text.substr(0, 1023));
      EXPECT_EQ(stateOf(id.c_str()), path ? "0 - -" : "none") << id;
    }
    EXPECT_TRUE(!path || !reportClass(id.c_str())->loadFailure.empty()) << id;
  }
  enterClass("Absent.Class", libraryPath("quiet"));
  EXPECT_EQ(failureOf("Absent.Class"), "");
  QSConfigVariableManager::GetInstance()->AddVariable("Reference", "Target");
  enterClass("A.Target", libraryPath("quiet"));
  EXPECT_EQ(failureOf("A.%Reference%"), "");
  std::filesystem::copy(libraryPath("quiet"), absent);
  EXPECT_EQ(failureOf("No.File"), "");
  EXPECT_EQ(reportClass("No.File")->loadFailure, "");
}

// No code page of Windows has these characters beside those of another alphabet.
TEST_F(DllLoaderTest, ALibraryMayLieInAFolderOfAnyName) {
  const std::u8string name = u8"/\u65E5\u672C \u0416\u00E9";
  const std::filesystem::path place(std::u8string(folder().path().begin(), folder().path().end()) +
                                    name);
  std::filesystem::create_directory(place);
  std::filesystem::copy(libraryPath("quiet"), place / "any.library");
  const std::u8string library = (place / "any.library").u8string();
  enterClass("Any.Folder", std::string(library.begin(), library.end()));
  EXPECT_EQ(failureOf("Any.Folder"), "");
  EXPECT_EQ(Stage::takeNotes(), "quiet comes, quiet goes");
}

// The top of the count, which no test reaches by loading, pins the library.
TEST_F(DllLoaderTest, ALibraryThatWasLoadedTooOftenStays) {
  constexpr std::uint32_t kTop = std::numeric_limits<std::uint32_t>::max();
  FactoryDll* const record = iqsDllLoader::Load("Pair.Plain", nullptr);
  for (const std::uint32_t count : {kTop - 1, kTop}) {
    record->loadCount = count;
    EXPECT_EQ(iqsDllLoader::Load("Pair.Plain", nullptr), record);
    iqsDllLoader::Unload(record);
    EXPECT_EQ(record->loadCount, kTop);
  }
  record->loadCount = 1;
  iqsDllLoader::Unload(record);
}

// More than one table of the index holds.
TEST_F(DllLoaderTest, FindsEachOfManyClasses) {
  const auto name = [](int number) { return "Many." + std::to_string(number); };
  for (int number = 0; number < 200; ++number) {
    enterClass(name(number), "/" + name(number));
    EXPECT_EQ(iqsDllLoader::Load(name(number).c_str(), nullptr), nullptr);
  }
  for (int number = 0; number < 200; ++number) {
    const std::optional<ClassReport> report = reportClass(name(number).c_str());
    EXPECT_EQ(report ? report->library : "none", "/" + name(number));
  }
}

int s_first = 1;
int s_second = 2;

const iqsDllLoader::CreatePlain kCreateFirst = []() -> void* { return &s_first; };
const iqsDllLoader::CreatePlain kCreateSecond = []() -> void* { return &s_second; };
const iqsDllLoader::ReleasePlain kRelease = [](void* instance) {
  *static_cast<int*>(instance) += 10;
};

// Registrars of the program itself fill records without a load. Each test has a class of its own,
// since a process keeps the records.
class RegistrarTest : public ComponentTest {
 protected:
  RegistrarTest() { enterClass(m_id, libraryPath("quiet")); }

  const char* const m_id = testing::UnitTest::GetInstance()->current_test_info()->name();
};

// The end takes back the loads with the factory.
TEST_F(RegistrarTest, OfTwoForOneClassTheLaterCountsAndTheEndOfEitherClears) {
  FactoryDll* const record = iqsDllLoader::Load(m_id, nullptr);
  std::optional<Registrar> first(std::in_place, m_id, kCreateFirst, kRelease);
  std::optional<Registrar> second;
  for (const int expected : {1, 2}) {
    auto* const instance = static_cast<int*>(iqsDllLoader::CreateInstance(record));
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(*instance, expected);
    iqsDllLoader::ReleaseInstance(record, instance);
    EXPECT_EQ(*instance, expected == 1 ? 11 : 2) << "the second has no release";
    second.emplace(m_id, kCreateSecond, nullptr);
  }
  EXPECT_EQ(iqsDllLoader::Load(m_id, nullptr), record);
  EXPECT_EQ(stateOf(m_id), "1 loaded factory");
  first.reset();
  EXPECT_EQ(stateOf(m_id), "0 - -");
  first.emplace(m_id, kCreateFirst, kRelease);
  second.reset();
  EXPECT_EQ(stateOf(m_id), "0 - -");
  iqsDllLoader::ReleaseInstance(record, &s_first);
  EXPECT_EQ(s_first, 11);
}

TEST_F(RegistrarTest, AClassIsCreatedByTheRouteOfItsLastFormAlone) {
  FactoryDll* const record = iqsDllLoader::Load(m_id, nullptr);
  const auto routes = [&] {
    return std::pair(iqsDllLoader::CreateInstance(record) != nullptr,
                     iqsDllLoader::iqsGetCreateInstance(m_id, nullptr) != nullptr);
  };
  const Registrar plain(m_id, kCreateFirst, kRelease);
  EXPECT_EQ(routes(), std::pair(true, false));
  const int before = s_first;
  const Registrar unknown(m_id, [](iqsUnknown*, iqsCUnknown**) { return kFailure; });
  EXPECT_EQ(routes(), std::pair(false, true));
  iqsDllLoader::ReleaseInstance(record, &s_first);
  EXPECT_EQ(s_first, before);
  const Registrar plainAgain(m_id, kCreateFirst, kRelease);
  EXPECT_EQ(routes(), std::pair(true, false));
  {
    const Registrar withoutId(nullptr, kCreateSecond, nullptr);
    const Registrar withoutFactory(m_id, nullptr, nullptr);
    const Registrar withoutEntry("No.Entry", kCreateSecond, nullptr);
  }
  EXPECT_EQ(routes(), std::pair(true, false));
  EXPECT_EQ(stateOf("No.Entry"), "none");
}

// Lets no look-up succeed.
struct ThrowingResolver : QSVariableResolver {
  QSResult Resolve(const std::string&, const std::string&, std::string&) override {
    throw std::runtime_error("from a resolver");
  }
};

// A registrar keeps what its look-up throws.
TEST_F(RegistrarTest, ExceptionsPassThroughAndLeaveTheLocksFree) {
  ThrowingResolver resolver;
  QSConfigVariableManager::GetInstance()->AddResolver(&resolver);
  const Registrar early(m_id, kCreateFirst, nullptr);
  EXPECT_THROW(static_cast<void>(iqsDllLoader::Load(m_id, nullptr)), std::runtime_error);
  QSConfigVariableManager::GetInstance()->RemoveResolver(&resolver);
  EXPECT_EQ(stateOf(m_id), "none");
  const Registrar registrar(
      m_id, []() -> void* { throw std::runtime_error("from a factory"); },
      [](void*) { throw std::runtime_error("from a release"); });
  FactoryDll* const record = iqsDllLoader::Load(m_id, nullptr);
  EXPECT_THROW(iqsDllLoader::CreateInstance(record), std::runtime_error);
  EXPECT_THROW(iqsDllLoader::ReleaseInstance(record, &s_first), std::runtime_error);
  std::thread([record] { iqsDllLoader::Unload(record); }).join();
  EXPECT_EQ(stateOf(m_id), "0 - factory");
}

}  // namespace
}  // namespace LTLib::Testing
