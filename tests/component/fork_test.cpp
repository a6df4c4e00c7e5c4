// Children of a fork that use the library, whatever the other threads of their parent were about.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>

#include "tests/component/component_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/forked_child.h"
#include "tests/support/threads.h"

namespace LTLib::Testing {
namespace {

bool s_isChild = false;

// A child that hangs is ended by a signal.
template <class Predicate>
bool holdsInChild(Predicate predicate) {
  return holdsInForked([&] {
    s_isChild = true;
    ::alarm(60);
    return predicate();
  });
}

bool readsAndWrites() {
  CQSRegValue value(REG_ROOT_LOCAL_MACHINE, "%CompanyRoot%\\Fork", "name");
  char* text = nullptr;
  return value.Write("text") == 0 && value.Read("name", text) == 0 &&
         std::strcmp(text, "text") == 0;
}

bool saves() {
  return readsAndWrites() && SaveConfiguration(REG_ROOT_LOCAL_MACHINE) == 0;
}

bool definesAndExpands() {
  static std::atomic<int> s_names{0};
  QSConfigVariableManager* const variables = QSConfigVariableManager::GetInstance();
  const std::string name = "Fork" + std::to_string(++s_names);
  std::string text = "%" + name + "%%CompanyRoot%";
  return variables->AddVariable(name, "") == 0 && QSExpandString(text) == 0 &&
         variables->RemoveVariable(name) == 0;
}

bool loadsAndCreates() {
  return usePlain("Pair.Plain") != nullptr;
}

ltDoOnce_t s_records[5000];

bool initialises() {
  static std::atomic<std::size_t> s_next{0};
  const auto initialise = [] {
    if (!s_isChild) {
      std::this_thread::yield();
    }
  };
  return ltDoOnce(s_records[s_next++ % std::size(s_records)], initialise) == kInitialised;
}

// The very one that was being initialised, too.
bool initialisesAll() {
  return std::all_of(std::begin(s_records), std::end(s_records),
                     [](const ltDoOnce_t&) { return initialises(); });
}

bool doesEverything() {
  static_cast<void>(UID::Generate());
  return readsAndWrites() && definesAndExpands() && loadsAndCreates() && initialises();
}

// Runs `main` while other threads do `work` over and over.
template <class Main>
void whileOthers(bool (*work)(), const Main& main) {
  std::atomic<bool> stop{false};
  runTogether(3, [&](int thread) {
    if (thread == 0) {
      main();
      stop = true;
    }
    while (!stop) {
      EXPECT_TRUE(work());
    }
  });
}

using ForkTest = ComponentTest;

TEST_F(ForkTest, TheChildFindsEverythingWholeAndFree) {
  const std::pair<bool (*)(), bool (*)()> othersAndChild[] = {
      {readsAndWrites, doesEverything},    {saves, saves},
      {definesAndExpands, doesEverything}, {loadsAndCreates, doesEverything},
      {initialises, initialisesAll},
  };
  for (const auto& [others, child] : othersAndChild) {
    whileOthers(others, [child = child] {
      for (int forks = 0; forks < 40; ++forks) {
        ASSERT_TRUE(holdsInChild(child)) << "in fork " << forks;
      }
    });
  }
}

// Forks come out of code that runs under the library's locks, and wait for nobody who waits for
// these.
TEST_F(ForkTest, AThreadMayForkUnderTheLibrarysLocks) {
  static int s_good = 0;
  static const auto fork = [] { s_good += holdsInChild(doesEverything) ? 1 : 0; };
  const auto forkInFactory = []() -> void* {
    fork();
    return nullptr;
  };
  struct ForkingResolver : QSVariableResolver {
    QSResult Resolve(const std::string& name, const std::string&, std::string&) override {
      if (name == "CLASSID") {
        fork();
      }
      return kFailure;
    }
  };
  // A class that a child is the first to load leads to the resolver again; and a thread that makes
  // its record waits for this one, which a fork lets it do for a second and no longer.
  ASSERT_TRUE(loadsAndCreates());
  enterClass("Forking", libraryPath("quiet"));
  const iqsDllLoader::Registrar forking("Forking", forkInFactory, nullptr);
  const auto once = std::make_unique<ltDoOnce_t[]>(10);
  whileOthers(doesEverything, [&once] {
    for (int round = 0; round < 10; ++round) {
      iqsDllLoader::CreateInstance(iqsDllLoader::Load("Forking", nullptr));

      ForkingResolver resolver;
      QSConfigVariableManager::GetInstance()->AddResolver(&resolver);
      EXPECT_EQ(iqsDllLoader::Load("No.Entry", nullptr), nullptr);
      QSConfigVariableManager::GetInstance()->RemoveResolver(&resolver);

      ltDoOnce(once[static_cast<std::size_t>(round)], [] { fork(); });

      const StoreGuard guard(GetConfigurationPathname(REG_ROOT_LOCAL_MACHINE));
      fork();
    }
  });
  EXPECT_EQ(s_good, 40);
}

// Holds a named mutex until it is told to give it up.
const Scenario s_owner("owner", [](const std::vector<std::string>& arguments) {
  NamedMutex mutex(arguments[0].c_str());
  mutex.lock();
  tellParent("held");
  static_cast<void>(hearParent());
  mutex.unlock();
  return 0;
});

// Right whether the other thread waits already by then or comes later.
TEST_F(ForkTest, WaitsForNoOtherProcess) {
  const TempFolder elsewhere;
  elsewhere.write("qsconfig.dat", elsewhere.name());
  const ScopedEnvironment store("HKEY_USERS", elsewhere.path("HKU.cfg"));
  ChildProcess owner("owner", {elsewhere.name()});
  ASSERT_EQ(owner.hear(), "held");
  std::thread reader([] {
    CQSRegValue value(REG_ROOT_USERS, "Key", "name");
    EXPECT_EQ(value.Write("text"), 0);
  });
  for (int forks = 0; forks < 100; ++forks) {
    EXPECT_TRUE(holdsInChild(doesEverything));
  }
  owner.tell("unlock");
  reader.join();
}

TEST_F(ForkTest, WaitsForNoForeignCode) {
  static Latch s_reached(1);
  static Latch s_over(1);
  enterClass("Waiting", libraryPath("quiet"));
  const auto wait = []() -> void* {
    s_reached.count_down();
    s_over.wait();
    return nullptr;
  };
  const iqsDllLoader::Registrar waiting("Waiting", wait, nullptr);
  std::thread creator([] { iqsDllLoader::CreateInstance(iqsDllLoader::Load("Waiting", nullptr)); });
  s_reached.wait();
  EXPECT_TRUE(holdsInChild(doesEverything));
  s_over.count_down();
  creator.join();
}

// The first of the four words is random but for what does not change within seconds.
TEST_F(ForkTest, TheChildsIdentifiersAreRandomAnew) {
  const auto generate = [] {
    char text[37];
    UID::Generate().toString(text, sizeof text);
    return std::string(text, 8);
  };
  const TempFolder heard;
  static_cast<void>(generate());
  EXPECT_TRUE(holdsInChild([&] { return !heard.write("child", generate()).empty(); }));
  EXPECT_NE(readFile(heard.path("child")), generate());
}

}  // namespace
// The first expansion of the process is on its way when it forks.
const Scenario s_firstUse("first use", [](const std::vector<std::string>&) {
  static Latch s_reached(1);
  static Latch s_over(1);
  struct HaltingResolver : QSVariableResolver {
    QSResult Resolve(const std::string&, const std::string&, std::string&) override {
      if (!s_isChild) {
        s_reached.count_down();
        s_over.wait();
      }
      return kFailure;
    }
  };
  HaltingResolver resolver;
  QSConfigVariableManager::GetInstance()->AddResolver(&resolver);
  std::string text;
  std::thread loader([&text] { QSExpandString(text); });
  s_reached.wait();
  const bool loaded = holdsInChild([&text] {
    text = "%Public%";
    return QSExpandString(text) == 0 && text == "value";
  });
  s_over.count_down();
  loader.join();
  return loaded ? 0 : 1;
});

TEST_F(ForkTest, TheChildLoadsPublicVariablesThatItsParentWasLoading) {
  const TempFolder own;
  const ScopedEnvironment store(
      "HKEY_LOCAL_MACHINE",
      own.write("HKLM.cfg",
                "[Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared\\PublicVars]\n"
                "\"Public\"=string:\"value\"\n"));
  EXPECT_EQ(ChildProcess("first use", {}).wait(), 0);
}

}  // namespace LTLib::Testing
