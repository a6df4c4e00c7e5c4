// One root from several threads, and one store from several processes that may die at any moment.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/foundation/named_mutex.h"
#include "tests/support/child_process.h"
#include "tests/support/store_fixture.h"
#include "tests/support/system.h"
#include "tests/support/threads.h"

namespace {

using namespace LTLib::Testing;

class StoreThreads : public StoreTest {};

// Each thread keeps a value of its own while it disturbs those of the others.
TEST_F(StoreThreads, EightThreadsDoEverythingOnOneRoot) {
  constexpr int kThreads = 8;
  restartWith("[Own\\0]\n\"first\"=string:\"1\"\n");
  runTogether(kThreads, [this](int number) {
    for (int round = 0; round < 150; ++round) {
      OpenKey own("Own\\" + std::to_string(number));
      const std::string text = std::to_string(round);
      EXPECT_EQ(own.set("text", text), 0);
      EXPECT_EQ(own.text("text"), text);
      OpenKey shared("Shared\\Key");
      shared.setNumber(std::to_string(round % 7).c_str(), 1);
      (void)shared.remove(std::to_string((round + 3) % 7).c_str());
      (void)m_manager.regCreateKey(kRoot, "Shared\\Key\\Sub", nullptr);
      (void)m_manager.regDeleteKey(kRoot, "Shared\\Key\\Sub");
      EXPECT_EQ(round % 50 == number ? save() : 0, 0);
    }
  });
  EXPECT_EQ(save(), 0);
  forgetStores();
  EXPECT_EQ(OpenKey("Own\\0").text("first"), "1");
  for (int number = 0; number < kThreads; ++number) {
    EXPECT_EQ(OpenKey("Own\\" + std::to_string(number)).text("text"), "149");
  }
}

// Whoever made a folder's identity without the machine's lock would not meet its last owner's end.
TEST_F(StoreThreads, TheIdentityIsMadeUnderTheLockOfTheMachine) {
  LTLib::NamedMutex lock("qs_config_lock");
  std::thread([&lock] { lock.lock(); }).join();
  EXPECT_THROW((void)load(), QSException);
  EXPECT_TRUE(m_folder.names().empty() && locksAreFree());
}

// The one value in the store, which repeats one character.
std::string textOf(char character) {
  return std::string(8000, character);
}

bool setText(char character) {
  return OpenKey("A\\B").set("n", textOf(character)) == 0;
}

// Whoever reads without the lock sees a whole store too, but where an open file cannot be replaced
// that reader would make saves fail.
bool isWhole(const std::string& store) {
  std::string text;
  while (text.empty()) {
    try {
      const auto hold = kOnWindows ? std::make_unique<LTLib::detail::StoreHold>(store) : nullptr;
      text = readFile(store);
    } catch (const QSException&) {
      // once for each lock that its owner left by being killed
    }
  }
  const std::string front = "[A\\B]\n\"n\"=string:\"";
  return text == front + textOf(text[std::min(front.size(), text.size())]) + "\"\n\n";
}

constexpr int kVictims = 60;

// Loads and saves in rounds, as one new process after the other would. Each lock that a victim left
// may fail one of them; a torn store ends it at once.
const Scenario s_saver("saver", [](const std::vector<std::string>& arguments) {
  const ScopedEnvironment environment("HKEY_LOCAL_MACHINE", arguments[0]);
  QSFileRegistryManager manager;
  std::mt19937 random(std::random_device{}());
  int spared = kVictims;
  tellParent("started");
  for (int left = 500; left > 0 && spared >= 0;) {
    forgetStores();
    try {
      const bool saved = setText(static_cast<char>('a' + random() % 26)) &&
                         manager.saveConfiguration(kMachine) == 0;
      --(saved ? left : spared);
    } catch (const QSException&) {
      --spared;
    }
    if (!isWhole(arguments[0])) {
      return 1;
    }
  }
  tellParent(std::to_string(kVictims - spared));
  return 0;
});

TEST_F(StoreThreads, EightProcessesOfWhichSomeAreKilled) {
  m_folder.write("qsconfig.dat", m_folder.name() + "_torture");
  ASSERT_TRUE(setText('0') && save() == 0);
  const auto start = [this](int count) {
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (int i = 0; i < count; ++i) {
      children.push_back(std::make_unique<ChildProcess>("saver", std::vector{store()}));
    }
    return children;
  };
  const auto savers = start(5);
  // Three more at a time are killed somewhere in their work, without any order.
  for (int victim = 0; victim < kVictims; victim += 3) {
    for (const auto& child : start(3)) {
      EXPECT_EQ(child->hear(), "started");
      EXPECT_TRUE(isWhole(store()));
      child->kill();
      child->wait();
    }
  }
  int failures = 0;
  for (const auto& saver : savers) {
    EXPECT_EQ(saver->hear(), "started");
    failures += std::stoi("0" + saver->hear());
    EXPECT_EQ(saver->wait(), 0);
  }
  EXPECT_LE(failures, kVictims) << "each abandoned lock is reported once";
  EXPECT_TRUE(isWhole(store()));
}

}  // namespace
