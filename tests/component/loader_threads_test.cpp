// Threads that create, load and unload at the same time never wait for each other for ever.
#include "tests/component/component_fixture.h"
#include "tests/support/threads.h"

namespace LTLib::Testing {
namespace {

using FactoryDll = iqsDllLoader::FactoryDll;

constexpr int kRounds = 400;

// Creates an object of the other form, and leaves the load behind.
bool createUnknown() {
  void* out = nullptr;
  return iqs_CoCreateInstance(nullptr, "Pair.Unknown", &out) == 0 &&
         static_cast<iqsUnknown*>(out)->Release() == 0;
}

// Undoes a load of its own and one that was left behind.
void unloadUnknown() {
  FactoryDll* const record = iqsDllLoader::Load("Pair.Unknown", nullptr);
  iqsDllLoader::Unload(record);
  iqsDllLoader::Unload(record);
}

class LoaderThreadsTest : public ComponentTest {
 protected:
  LoaderThreadsTest() { enterClass("Outer", libraryPath("quiet")); }
};

// The outer class's functions run under the loader's locks and load a library, whose registrars
// want the lock that those functions run under.
TEST_F(LoaderThreadsTest, FactoriesThatLoadMeetLibrariesThatRegister) {
  const iqsDllLoader::Registrar outer(
      "Outer", [] { return usePlain("Pair.Plain"); }, [](void*) { usePlain("Pair.Plain"); });
  runTogether(4, [](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      EXPECT_EQ(iqsDllLoader::Load("No.Entry", nullptr), nullptr);
      if (thread == 3) {
        EXPECT_TRUE(createUnknown());
        unloadUnknown();
      } else {
        EXPECT_NE(usePlain(thread < 2 ? "Outer" : "Pair.Plain"), nullptr);
      }
    }
  });
  EXPECT_EQ(stateOf("Outer"), "0 - factory");
  EXPECT_EQ(stateOf("Pair.Plain") + stateOf("Pair.Unknown"), "0 - -0 - -") << "each load counts";
}

TEST_F(LoaderThreadsTest, ThreadsThatFindAClassAtOnceShareItsRecord) {
  for (int round = 0; round < 50; ++round) {
    const std::string id = "Found." + std::to_string(round);
    enterClass(id, libraryPath("quiet"));
    FactoryDll* found[3];
    runTogether(3, [&](int thread) { found[thread] = iqsDllLoader::Load(id.c_str(), nullptr); });
    EXPECT_EQ(stateOf(id.c_str()), "3 loaded -");
    for (FactoryDll* const record : found) {
      EXPECT_EQ(record, found[0]);
      iqsDllLoader::Unload(record);
    }
  }
}

TEST_F(LoaderThreadsTest, LoadedClassesAreCreatedWhileAPlainFactoryRuns) {
  ASSERT_TRUE(createUnknown());
  const auto createOnAnotherThread = []() -> void* {
    static bool s_created = false;
    std::thread([] { s_created = createUnknown(); }).join();
    return s_created ? &s_created : nullptr;
  };
  const iqsDllLoader::Registrar waiting("Outer", createOnAnotherThread, nullptr);
  EXPECT_NE(usePlain("Outer"), nullptr);
  unloadUnknown();
  unloadUnknown();
}

}  // namespace
}  // namespace LTLib::Testing
