// Threads that create, load and unload at the same time never wait for each other for ever.
#include <array>
#include <atomic>
#include <thread>

#include "tests/component/component_fixture.h"
#include "tests/support/latch.h"
#include "tests/support/watchdog.h"

namespace LTLib::Testing {
namespace {

constexpr int kRounds = 400;

using Round = bool (*)();

// Loads, creates, releases and unloads an object of the plain form.
bool usePlain(const char* id) {
  iqsDllLoader::FactoryDll* const record = iqsDllLoader::Load(id, nullptr);
  void* const instance = iqsDllLoader::CreateInstance(record);
  iqsDllLoader::ReleaseInstance(record, instance);
  iqsDllLoader::Unload(record);
  return instance != nullptr;
}

// The factory runs under the loader's locks and loads the other library.
bool createNested() {
  return usePlain("Nest.Outer");
}

// The registrars run within the load and want the lock that factories run under.
bool loadInner() {
  return usePlain("Nest.Inner");
}

bool lookUpTheAbsent() {
  return iqsDllLoader::Load("Nest.Absent", nullptr) == nullptr;
}

class LoaderThreadsTest : public ComponentTest {
 protected:
  LoaderThreadsTest() {
    enterClass("Nest.Outer", libraryPath("component_nest_outer"));
    enterClass("Nest.Inner", libraryPath("component_nest_inner"));
    enterClass("Nest.Unknown", libraryPath("component_nest_inner"));
  }

  // Each of the functions on a thread of its own, again and again; gives the rounds that failed.
  template <std::size_t kThreads>
  static int failuresOf(const std::array<Round, kThreads>& rounds) {
    const Watchdog watchdog(std::chrono::seconds(120));
    std::atomic<int> failures{0};
    LTLib::Testing::Latch start(kThreads);
    std::array<std::thread, kThreads> threads;
    for (std::size_t i = 0; i < kThreads; ++i) {
      threads[i] = std::thread([&start, &failures, round = rounds[i]] {
        start.arrive_and_wait();
        for (int left = kRounds; left > 0; --left) {
          failures += round() ? 0 : 1;
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    return failures;
  }
};

TEST_F(LoaderThreadsTest, FactoriesThatLoadMeetLibrariesThatRegister) {
  const std::array<Round, 4> rounds = {createNested, loadInner, createNested, lookUpTheAbsent};
  EXPECT_EQ(failuresOf(rounds), 0);
  EXPECT_EQ(reportClass("Nest.Outer")->loadCount, 0u);
  EXPECT_EQ(reportClass("Nest.Inner")->loadCount, 0u);
  EXPECT_FALSE(reportClass("Nest.Inner")->isLoaded);
}

TEST_F(LoaderThreadsTest, CreationsOfALoadedClassCountEachLoad) {
  const Round create = [] {
    void* out = nullptr;
    return iqs_CoCreateInstance(nullptr, "Nest.Unknown", &out) == 0 &&
           static_cast<iqsUnknown*>(out)->Release() == 0;
  };
  const std::array<Round, 4> rounds = {create, create, create, loadInner};
  EXPECT_EQ(failuresOf(rounds), 0);
  EXPECT_EQ(reportClass("Nest.Unknown")->loadCount, 3u * kRounds);
}

// A plain factory that waits for another thread's creation of a class that is loaded already.
TEST_F(LoaderThreadsTest, LoadedClassesAreCreatedWhileAFactoryRuns) {
  const Watchdog watchdog(std::chrono::seconds(120));
  void* out = nullptr;
  ASSERT_EQ(iqs_CoCreateInstance(nullptr, "Nest.Unknown", &out), 0);
  static_cast<iqsUnknown*>(out)->Release();
  enterClass("Nest.Waiting", libraryPath("component_nest_inner"));
  const iqsDllLoader::Registrar waiting(
      "Nest.Waiting",
      []() -> void* {
        void* made = nullptr;
        std::thread([&made] { iqs_CoCreateInstance(nullptr, "Nest.Unknown", &made); }).join();
        return made;
      },
      [](void* instance) { static_cast<iqsUnknown*>(instance)->Release(); });
  EXPECT_TRUE(usePlain("Nest.Waiting"));
}

}  // namespace
}  // namespace LTLib::Testing
