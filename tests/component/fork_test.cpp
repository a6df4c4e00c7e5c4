// Children of a fork that use the library, whatever the other threads of their parent were about.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <thread>

#include "tests/component/component_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/forked_child.h"
#include "tests/support/threads.h"

namespace LTLib::Testing {
namespace {

using FactoryDll = iqsDllLoader::FactoryDll;

bool s_isChild = false;

// A child that hangs is ended by a signal, and so is a parent that does.
constexpr unsigned int kSeconds = 60;

template <class Predicate>
bool holdsInChild(Predicate predicate) {
  return holdsInForked([&] {
    s_isChild = true;
    ::alarm(kSeconds);
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
  FactoryDll* const record = iqsDllLoader::Load("Pair.Plain", nullptr);
  void* const instance = iqsDllLoader::CreateInstance(record);
  iqsDllLoader::ReleaseInstance(record, instance);
  iqsDllLoader::Unload(record);
  return instance != nullptr;
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
void whileOthers(bool (*work)(), const std::function<void()>& main) {
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

class ForkTest : public ComponentTest {
 protected:
  ForkTest() { ::alarm(5 * kSeconds); }
  ~ForkTest() override { ::alarm(0); }
};

TEST_F(ForkTest, TheChildFindsEverythingWholeAndFree) {
  struct Row {
    const char* label;
    int forks;
    bool (*others)();
    bool (*child)();
  };
  const Row rows[] = {
      {"reads", 60, readsAndWrites, doesEverything},
      {"saves", 15, saves, saves},
      {"expansion", 60, definesAndExpands, doesEverything},
      {"loader", 60, loadsAndCreates, doesEverything},
      {"initialisation", 60, initialises, initialisesAll},
  };
  for (const Row& row : rows) {
    whileOthers(row.others, [&row] {
      for (int forks = 0; forks < row.forks; ++forks) {
        ASSERT_TRUE(holdsInChild(row.child)) << row.label << " in fork " << forks;
      }
    });
  }
}

// Forks come out of code that runs under the library's locks, and wait for nobody who waits for
// these.
TEST_F(ForkTest, AThreadMayForkUnderTheLibrarysLocks) {
  static int s_good = 0;
  static const auto fork = [] { s_good += holdsInChild(doesEverything) ? 1 : 0; };
  static const auto forkInFactory = []() -> void* {
    fork();
    return &s_good;
  };
  struct ForkingResolver : QSVariableResolver {
    QSResult Resolve(const std::string& name, const std::string&, std::string&) override {
      if (name == "CLASSID" && !std::exchange(m_done, true)) {
        fork();
      }
      return kFailure;
    }
    bool m_done = false;
  };
  s_good = 0;
  enterClass("Forking", libraryPath("quiet"));
  const iqsDllLoader::Registrar forking("Forking", forkInFactory, nullptr);
  const auto once = std::make_unique<ltDoOnce_t[]>(10);
  whileOthers(doesEverything, [&once] {
    for (int round = 0; round < 10; ++round) {
      FactoryDll* const record = iqsDllLoader::Load("Forking", nullptr);
      EXPECT_NE(iqsDllLoader::CreateInstance(record), nullptr);
      iqsDllLoader::Unload(record);

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

// Where a thread of the parent stands still while its process forks.
class Halt {
 public:
  void pass() {
    if (!s_isChild) {
      m_reached.count_down();
      m_over.wait();
    }
  }
  void waitUntilReached() { m_reached.wait(); }
  void end() { m_over.count_down(); }

 private:
  Latch m_reached{1};
  Latch m_over{1};
};

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
  bool good = true;
  for (int forks = 0; good && forks < 100; ++forks) {
    good = holdsInChild(doesEverything);
  }
  EXPECT_TRUE(good);
  owner.tell("unlock");
  reader.join();
}

TEST_F(ForkTest, WaitsForNoForeignCode) {
  static Halt s_inFactory;
  enterClass("Waiting", libraryPath("quiet"));
  const iqsDllLoader::Registrar waiting(
      "Waiting", []() -> void* { return s_inFactory.pass(), nullptr; }, nullptr);
  std::thread creator([] { iqsDllLoader::CreateInstance(iqsDllLoader::Load("Waiting", nullptr)); });
  s_inFactory.waitUntilReached();
  EXPECT_TRUE(holdsInChild(doesEverything));
  s_inFactory.end();
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

// The first expansion of the process is on its way when it forks.
const Scenario s_firstUse("first use", [](const std::vector<std::string>&) {
  static Halt s_inLoad;
  struct HaltingResolver : QSVariableResolver {
    QSResult Resolve(const std::string&, const std::string&, std::string&) override {
      s_inLoad.pass();
      return kFailure;
    }
  };
  HaltingResolver resolver;
  QSConfigVariableManager::GetInstance()->AddResolver(&resolver);
  std::string text;
  std::thread loader([&text] { QSExpandString(text); });
  s_inLoad.waitUntilReached();
  const bool loaded = holdsInChild([&text] {
    text = "%Public%";
    return QSExpandString(text) == 0 && text == "value";
  });
  s_inLoad.end();
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

}  // namespace
}  // namespace LTLib::Testing
