// One root from several threads, and one store from several processes that may die at any moment.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "ltlib/fileregistry/store_files.h"
#include "tests/support/child_process.h"
#include "tests/support/latch.h"
#include "tests/support/store_fixture.h"
#include "tests/support/system.h"
#include "tests/support/text_tree.h"

namespace {

using LTLib::predefinedRootHandle;
using LTLib::Testing::ChildProcess;
using LTLib::Testing::forgetStores;
using LTLib::Testing::OpenKey;
using LTLib::Testing::readFile;
using LTLib::Testing::Reading;
using LTLib::Testing::readText;
using LTLib::Testing::Scenario;

constexpr enumRegRoot kMachine = REG_ROOT_LOCAL_MACHINE;

class StoreThreads : public LTLib::Testing::StoreTest {};

// Each thread keeps values of its own while it disturbs those of the others.
void playThread(QSFileRegistryManager& manager, int number, std::atomic<int>& wrong) {
  const std::string own = "Own\\Thread" + std::to_string(number);
  for (int round = 0; round < 150; ++round) {
    const OpenKey key(manager, kMachine, own.c_str());
    const std::string text = std::to_string(number) + ':' + std::to_string(round);
    wrong += key.setText("text", text) != 0 || key.text("text") != text;
    const OpenKey shared(manager, kMachine, "Shared\\Key");
    shared.setNumber(std::to_string(round % 7).c_str(), 1);
    (void)shared.text("3");
    (void)manager.regDeleteValue(shared.get(), std::to_string((round + 3) % 7).c_str());
    char name[32];
    unsigned int size = sizeof name;
    (void)manager.regEnumValue(shared.get(), 0, name, &size, nullptr, nullptr, nullptr, nullptr);
    size = sizeof name;
    (void)manager.regEnumKeyEx(key.get(), 0, name, &size);
    void* made = nullptr;
    (void)manager.regCreateKey(predefinedRootHandle(kMachine), "Shared\\Key\\Sub", &made);
    (void)manager.regCloseKey(made);
    (void)manager.regDeleteKey(predefinedRootHandle(kMachine), "Shared\\Key\\Sub");
    if (round % 50 == number) {
      wrong += manager.saveConfiguration(kMachine) != 0;
    }
  }
}

TEST_F(StoreThreads, EightThreadsDoEverythingOnOneRoot) {
  m_folder.write("HKEY_LOCAL_MACHINE.cfg", "[Own\\Thread0]\n\"first\"=ulong:1\n");
  std::atomic<int> wrong = 0;
  LTLib::Testing::Latch start(8);
  std::vector<std::thread> threads;
  for (int number = 0; number < 8; ++number) {
    threads.emplace_back([&, number] {
      start.arrive_and_wait();
      playThread(m_manager, number, wrong);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
  forgetStores();
  EXPECT_EQ(OpenKey(m_manager, kMachine, "Own\\Thread0").text("first"), std::string("\1\0\0\0", 4));
  for (int number = 0; number < 8; ++number) {
    const std::string path = "Own\\Thread" + std::to_string(number);
    EXPECT_EQ(OpenKey(m_manager, kMachine, path.c_str()).text("text"),
              std::to_string(number) + ":149");
  }
}

// The text that every saver writes in whole: as many numbers as the count of the text says.
std::string wholeText(const Reading& reading) {
  const QSCfgDataSection* section = reading.root->findSection("A");
  section = section != nullptr ? section->findSection("B") : nullptr;
  if (reading.threw || reading.result != LTLib::detail::ReadResult::kWhole || section == nullptr) {
    return "torn";
  }
  for (std::size_t i = 1; i < section->fieldCount(); ++i) {
    if (section->fieldAt(i).getValue() != section->fieldAt(0).getValue()) {
      return "mixed";
    }
  }
  return section->fieldCount() == 200 ? "whole" : "short";
}

constexpr bool kOpenFilesCanBeReplaced = !LTLib::Testing::kOnWindows;

// Whoever reads without the lock sees a whole store too, but where an open file cannot be replaced
// that reader would make saves fail.
std::string storeText(const std::string& store) {
  if constexpr (kOpenFilesCanBeReplaced) {
    return readFile(store);
  }
  for (;;) {
    try {
      const LTLib::detail::StoreHold hold(store);
      return readFile(store);
    } catch (const QSException& caught) {
      EXPECT_NE(caught.What().find(" (abandoned)"), std::string::npos);
    }
  }
}

// Loads and saves in rounds, as one new process after the other would. Tells how many locks were
// reported as abandoned; a torn store ends it at once.
int playSaver(const std::vector<std::string>& arguments) {
  const std::string& store = arguments[0];
  const int rounds = std::stoi(arguments[1]);
  const LTLib::Testing::ScopedEnvironment environment("HKEY_LOCAL_MACHINE", store);
  QSFileRegistryManager manager;
  std::mt19937 random(std::random_device{}());
  int abandoned = 0;
  LTLib::Testing::tellParent("started");
  for (int round = 0; round < rounds;) {
    forgetStores();
    try {
      const OpenKey key(manager, kMachine, "A\\B");
      const std::string text = std::to_string(random());
      for (int i = 0; i < 200; ++i) {
        if (key.setText(("n" + std::to_string(i)).c_str(), text) != 0) {
          return 3;
        }
      }
      if (manager.saveConfiguration(kMachine) != 0) {
        ++abandoned;
        continue;
      }
    } catch (const QSException& caught) {
      if (caught.What().find(" (abandoned)") == std::string::npos) {
        return 4;
      }
      ++abandoned;
      continue;
    }
    if (wholeText(readText(storeText(store))) != "whole") {
      return 5;
    }
    ++round;
  }
  LTLib::Testing::tellParent(std::to_string(abandoned));
  return 0;
}
const Scenario s_saver("saver", playSaver);

TEST_F(StoreThreads, EightProcessesOfWhichSomeAreKilled) {
  const std::string identity = m_folder.name() + "_torture";
  m_folder.write("qsconfig.dat", identity);
  {
    const OpenKey key(m_manager, kMachine, "A\\B");
    for (int i = 0; i < 200; ++i) {
      EXPECT_EQ(key.setText(("n" + std::to_string(i)).c_str(), "0"), 0);
    }
    ASSERT_EQ(m_manager.saveConfiguration(kMachine), 0);
  }
  const auto start = [&](int rounds) {
    return std::make_unique<ChildProcess>(
        "saver", std::vector<std::string>{store(), std::to_string(rounds)});
  };
  constexpr int kRounds = 500;
  std::vector<std::unique_ptr<ChildProcess>> savers;
  for (int i = 0; i < 5; ++i) {
    savers.push_back(start(kRounds));
  }
  // Three more at a time are killed somewhere in their work, without any order.
  constexpr int kVictims = 60;
  for (int victim = 0; victim < kVictims; victim += 3) {
    std::vector<std::unique_ptr<ChildProcess>> victims;
    for (int i = 0; i < 3; ++i) {
      victims.push_back(start(kRounds));
    }
    for (auto& child : victims) {
      EXPECT_EQ(child->hear(), "started");
      EXPECT_EQ(wholeText(readText(storeText(store()))), "whole");
      child->kill();
      child->wait();
    }
  }
  int abandoned = 0;
  for (auto& saver : savers) {
    EXPECT_EQ(saver->hear(), "started");
    abandoned += std::stoi("0" + saver->hear());
    EXPECT_EQ(saver->wait(), 0);
  }
  EXPECT_LE(abandoned, kVictims) << "each abandoned lock is reported once";
  EXPECT_EQ(wholeText(readText(storeText(store()))), "whole");
}

}  // namespace
