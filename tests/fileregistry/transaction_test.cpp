// Transactions of several processes on one store, and what is left of one that did not come to its end.
#include "ltlib/settings/transaction.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "ltlib/settings.h"
#include "tests/support/child_process.h"
#include "tests/support/environment.h"
#include "tests/support/store_fixture.h"

namespace {

using namespace LTLib::Testing;
using LTLib::Changes;
using LTLib::Key;
using LTLib::Root;
using LTLib::SettingsErrc;
using LTLib::Transaction;

constexpr int kProcesses = 7;
constexpr int kKilled = 3;  // of them, at any moment

Key counters() {
  return {Root::kLocalMachine, "Software\\Counters"};
}

// Adds 1 to the value of its own as often as told, and tells of each that is committed.
const Scenario s_counts("counts", [](const std::vector<std::string>& arguments) {
  for (int left = std::stoi(arguments[1]); left > 0; --left) {
    Transaction transaction(Root::kLocalMachine);
    const int next = counters().get(arguments[0], 0) + 1;
    counters().set(arguments[0], next);
    transaction.commit();
    tellParent(std::to_string(next));
  }
  return 0;
});

class Transactions : public StoreTest {
 protected:
  // As another process would, with this one's tree left alone.
  void saveElsewhere(const std::string& text) const {
    m_folder.write("HKEY_LOCAL_MACHINE.cfg", text);
  }
  [[nodiscard]] std::string saved() const { return readFile(store()); }
};

TEST_F(Transactions, EveryCommittedChangeOfSevenProcessesIsThere) {
  const char* const asked = std::getenv("LTLIB_TEST_TRANSACTIONS");
  const int rounds = asked != nullptr ? std::atoi(asked) : 40;
  std::vector<std::unique_ptr<ChildProcess>> children;
  children.reserve(kProcesses);
  for (int i = 0; i < kProcesses; ++i) {
    // Those that are killed would go on for ever.
    const int until = i < kKilled ? 1'000'000'000 : rounds;
    children.push_back(std::make_unique<ChildProcess>(
        "counts", std::vector<std::string>{std::to_string(i), std::to_string(until)}));
  }
  std::vector<int> told(kProcesses);
  for (int i = 0; i < kKilled; ++i) {
    for (int round = 0; round < rounds / (i + 2); ++round) {
      told[i] = std::stoi(children[i]->hear());
    }
    children[i]->kill();
  }
  for (int i = 0; i < kProcesses; ++i) {
    for (std::string line = children[i]->hear(); !line.empty(); line = children[i]->hear()) {
      told[i] = std::stoi(line);
    }
    EXPECT_EQ(children[i]->wait() == 0, i >= kKilled);
  }
  Transaction transaction(Root::kLocalMachine);
  for (int i = 0; i < kProcesses; ++i) {
    const int kept = counters().get(std::to_string(i), 0);
    // A process that was killed may have saved once more than it told.
    EXPECT_TRUE(kept == told[i] || (i < kKilled && kept == told[i] + 1)) << kept << told[i];
    EXPECT_TRUE(i < kKilled || kept == rounds);
  }
}

TEST_F(Transactions, OneSeesThePresentFileAndIsTakenBackUnlessCommitted) {
  restartWith("[A\\B]\n\"n\"=ulong:1\n\n");
  const Key key(Root::kLocalMachine, "A\\B");
  EXPECT_EQ(key.get("n", 0), 1);
  saveElsewhere("[A\\B]\n\"n\"=ulong:2\n\n");
  EXPECT_EQ(key.get("n", 0), 1);
  {
    const Transaction transaction(Root::kLocalMachine);
    EXPECT_EQ(key.get("n", 0), 2);
    key.set("n", 3);
    key.set("other", 3);
  }
  EXPECT_TRUE(key.get("n", 0) == 2 && !key.contains("other") && locksAreFree());
  Transaction transaction(Root::kLocalMachine);
  key.set("n", 4);
  transaction.commit();
  EXPECT_EQ(saved(), "[A\\B]\n\"n\"=ulong:4\n\n");
  EXPECT_TRUE(locksAreFree());
  EXPECT_THROW(transaction.commit(), LTLib::SettingsError);
}

TEST_F(Transactions, WhatFailsLeavesAllAsItWas) {
  restartWith("[A\\B]\n\"n\"=ulong:1\n\n");
  const Key key(Root::kLocalMachine, "A\\B");
  std::error_code code;
  key.set("n", 2);
  saveElsewhere("[A\\B]\n\"n\"=ulong:3\n\n");
  { const Transaction refused(Root::kLocalMachine, code); }
  EXPECT_EQ(code, SettingsErrc::kUnsaved);
  EXPECT_THROW(LTLib::reload(Root::kLocalMachine), LTLib::SettingsError);
  EXPECT_EQ(key.get("n", 0), 2);
  EXPECT_EQ(save(), 0);
  LTLib::reload(Root::kLocalMachine, code);
  EXPECT_TRUE(!code && locksAreFree());

  std::filesystem::create_directory(m_folder.path("HKEY_LOCAL_MACHINE.cfg_new"));
  m_folder.write("HKEY_LOCAL_MACHINE.cfg_new/file", "");
  {
    Transaction transaction(Root::kLocalMachine);
    key.set("n", 5);
    transaction.commit(code);
    EXPECT_EQ(code, SettingsErrc::kStoreFailure);
    EXPECT_TRUE(key.get("n", 0) == 2 && locksAreFree());
  }
  std::filesystem::remove(store());
  std::filesystem::create_directory(store());
  LTLib::reload(Root::kLocalMachine, code);
  EXPECT_EQ(code, SettingsErrc::kStoreFailure);
  EXPECT_EQ(key.get("n", 0), 2);
}

// What was told of, in one line for each: the key's last name, the value's, and what it was and is.
class ChangesOfAStore : public Transactions {
 protected:
  Changes changesOf(const Key& key) {
    return Changes(key, [this](const LTLib::Change& change) {
      const auto shown = [](const std::optional<LTLib::Value>& value) {
        return value ? value->shown() : "-";
      };
      m_told.append(change.key.name()).append(" " + change.name + ": ");
      m_told.append(shown(change.before) + " " + shown(change.after) + "\n");
    });
  }
  // What a notice leads to; what is no more than one save may come as several.
  std::string next(Changes& changes) {
    m_told.clear();
    while (m_told.empty() && changes.wait(std::chrono::minutes(1))) {
      changes.dispatch();
    }
    return m_told;
  }

  std::string m_told;
};

TEST_F(ChangesOfAStore, ComeFromTheStoreWhoeverSavesIt) {
  const Key key(Root::kLocalMachine, "Software\\Counters");
  Changes changes = changesOf(key);
  EXPECT_EQ(changes.dispatch(), 0u) << "there is no store yet";
  EXPECT_TRUE(kOnWindows || !changes.wait(std::chrono::milliseconds(0))) << "a look is no change";
  ChildProcess child("counts", {"n", "1"});
  EXPECT_EQ(next(changes), "Counters n: - 1\n");
  EXPECT_EQ(child.wait(), 0);
  m_folder.write("other", "");
  EXPECT_EQ(changes.dispatch(), 0u);
  Changes moved = std::move(changes);
  saveElsewhere(
      "[Software\\Counters]\n\"n\"=string:\"1\"\n[Software\\Counters\\%a%]\n\"m\"=ulong:2\n");
  EXPECT_EQ(next(moved), "Counters n: 1 \"1\"\n%a% m: - 2\n");
  (key / "Sub").set("mine", 1);
  (void)key.erase("n");
  EXPECT_EQ(save(), 0);
  EXPECT_EQ(next(moved), "Sub mine: - 1\nCounters n: \"1\" -\n");

  // Nothing gets lost, neither what is not saved nor what is not told.
  key.set("mine", 2);
  saveElsewhere("[Software\\Counters]\n\"n\"=ulong:3\n");
  EXPECT_TRUE(moved.wait(std::chrono::minutes(1)));
  std::error_code code;
  EXPECT_EQ(moved.dispatch(code), 0u);
  EXPECT_EQ(code, SettingsErrc::kUnsaved);
  forgetStores();
  m_told.clear();
  EXPECT_EQ(moved.dispatch(code), 3u) << m_told;
  EXPECT_FALSE(code);
  EXPECT_TRUE(locksAreFree());
}

TEST_F(ChangesOfAStore, AreRefusedWhereThereAreNone) {
  std::error_code code;
  const Changes tooHigh(Key(Root::kLocalMachine, "Software"), nullptr, code);
  EXPECT_EQ(code, SettingsErrc::kNoForm);
  EXPECT_FALSE(tooHigh.wait(std::chrono::minutes(1)));
  const ScopedEnvironment nowhere("HKEY_LOCAL_MACHINE", m_folder.path("absent/store"));
  EXPECT_THROW((void)changesOf(counters()), LTLib::SettingsError);
}

}  // namespace
