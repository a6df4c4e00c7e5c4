// Loading and unloading of real component libraries, the plain form, and registrars.
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <tuple>

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
    EXPECT_EQ(stateOf("Pair.Plain") + stateOf("Pair.Unknown"), "2 loaded factory0 - factory");
    void* const instance = iqsDllLoader::CreateInstance(record);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(*static_cast<int*>(instance), 1);
    iqsDllLoader::ReleaseInstance(record, instance);
    iqsDllLoader::Unload(record);
    EXPECT_EQ(stateOf("Pair.Plain"), "1 loaded factory");
    EXPECT_EQ(Stage::takeNotes(), "pair comes, plain ends");
    iqsDllLoader::Unload(record);
    iqsDllLoader::Unload(record);
    EXPECT_EQ(stateOf("Pair.Plain") + stateOf("Pair.Unknown"), "0 - -0 - -");
    EXPECT_EQ(Stage::takeNotes(), "pair goes");
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
  EXPECT_EQ(iqsDllLoader::Load("Broken.Kept", &text), nullptr);
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
      {std::string(996, 'i'), {}},
      {"A.LongPath", "/" + std::string(2000, 'p')},
      {"No.File", absent},
      {"No.Image", folder().write("no_library", "no library\n")},
      {"A.Variable", "%SharedRoot%"},
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
  QSConfigVariableManager::GetInstance()->AddVariable("Reference", "Target");
  enterClass("A.Target", libraryPath("quiet"));
  EXPECT_EQ(failureOf("A.%Reference%"), "");
  std::filesystem::copy(libraryPath("quiet"), absent);
  EXPECT_EQ(failureOf("No.File"), "");
  EXPECT_EQ(reportClass("No.File")->loadFailure, "");
}

// No code page of Windows has these characters beside those of another alphabet.
TEST_F(DllLoaderTest, ALibraryMayBearAnyName) {
  const std::string path = folder().path("\xE6\x97\xA5 \xD0\x96\xC3\xA9.library");
  std::filesystem::copy(libraryPath("quiet"), std::u8string(path.begin(), path.end()));
  enterClass("Any.Name", path);
  EXPECT_EQ(failureOf("Any.Name"), "");
  EXPECT_EQ(Stage::takeNotes(), "quiet comes, quiet goes");
}

// More than one table of the index holds.
TEST_F(DllLoaderTest, FindsEachOfManyClasses) {
  const auto name = [](int number) { return "Many." + std::to_string(number); };
  for (int number = 0; number < 200; ++number) {
    enterClass(name(number), "/" + name(number));
    EXPECT_EQ(iqsDllLoader::Load(name(number).c_str(), nullptr), nullptr);
  }
  for (int number = 0; number < 200; ++number) {
    EXPECT_EQ(stateOf(name(number).c_str()), "0 - -");
  }
}

int s_releases = 0;

const iqsDllLoader::CreatePlain kCreate = []() -> void* { return &s_releases; };
const iqsDllLoader::ReleasePlain kRelease = [](void*) { ++s_releases; };

// Registrars of the program itself fill records without a load. Each test has a class of its own,
// since a process keeps the records.
class RegistrarTest : public ComponentTest {
 protected:
  RegistrarTest() { enterClass(m_id, libraryPath("quiet")); }

  const char* const m_id = testing::UnitTest::GetInstance()->current_test_info()->name();
};

// The end of either takes back the loads with the factory.
TEST_F(RegistrarTest, OfTwoForOneClassTheLaterCountsAndTheEndOfEitherClears) {
  FactoryDll* const record = iqsDllLoader::Load(m_id, nullptr);
  const auto routes = [&] {
    iqsDllLoader::ReleaseInstance(record, record);
    return std::tuple(iqsDllLoader::CreateInstance(record) != nullptr,
                      iqsDllLoader::iqsGetCreateInstance(m_id, nullptr) != nullptr, s_releases);
  };
  std::optional<Registrar> plain(std::in_place, m_id, kCreate, kRelease);
  EXPECT_EQ(routes(), std::tuple(true, false, 1));
  std::optional<Registrar> unknown(std::in_place, m_id,
                                   [](iqsUnknown*, iqsCUnknown**) { return kFailure; });
  EXPECT_EQ(routes(), std::tuple(false, true, 1));
  plain.reset();
  EXPECT_EQ(stateOf(m_id), "0 - -");
  plain.emplace(m_id, kCreate, kRelease);
  {
    const Registrar withoutId(nullptr, kCreate, nullptr);
    const Registrar withoutFactory(m_id, nullptr, nullptr);
    const Registrar withoutEntry("No.Entry", kCreate, nullptr);
  }
  EXPECT_EQ(routes(), std::tuple(true, false, 2));
  unknown.reset();
  EXPECT_EQ(stateOf(m_id), "0 - -");
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
  const Registrar early(m_id, kCreate, nullptr);
  EXPECT_THROW(static_cast<void>(iqsDllLoader::Load(m_id, nullptr)), std::runtime_error);
  QSConfigVariableManager::GetInstance()->RemoveResolver(&resolver);
  EXPECT_EQ(stateOf(m_id), "none");
  const Registrar registrar(
      m_id, []() -> void* { throw std::runtime_error("from a factory"); },
      [](void*) { throw std::runtime_error("from a release"); });
  FactoryDll* const record = iqsDllLoader::Load(m_id, nullptr);
  EXPECT_THROW(iqsDllLoader::CreateInstance(record), std::runtime_error);
  EXPECT_THROW(iqsDllLoader::ReleaseInstance(record, record), std::runtime_error);
  std::thread([record] { iqsDllLoader::Unload(record); }).join();
  EXPECT_EQ(stateOf(m_id), "0 - factory");
}

}  // namespace
}  // namespace LTLib::Testing
