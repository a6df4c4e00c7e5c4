// Every way in which reading or replacing a store can fail: the result, the files, the locks.
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "ltlib/fileregistry/store/store_failure.h"
#include "ltlib/foundation/kqsresult.h"
#include "tests/support/store_fixture.h"
#include "tests/support/system.h"

namespace {

namespace fs = std::filesystem;
using namespace LTLib::Testing;
using LTLib::Platform::FileCalls;
using LTLib::Platform::fileCalls;
using LTLib::Platform::FileResult;

FileCalls s_real;
constexpr int kNever = -1;
int s_callsLeft = kNever;  // ahead of the one that fails

// Stands in for one call of the table.
template <auto Call>
struct Watched;

template <class Result, class... Arguments, Result (*FileCalls::*Call)(Arguments...)>
struct Watched<Call> {
  static Result ask(Arguments... arguments) {
    // A file is closed, and freed, whatever the result.
    constexpr bool kCloses = std::is_same_v<decltype(Call), decltype(&FileCalls::close)>;
    const bool fails = s_callsLeft >= 0 && s_callsLeft-- == 0;
    const Result result = !fails || kCloses ? (s_real.*Call)(arguments...) : FileResult::kFailed;
    return fails ? FileResult::kFailed : result;
  }
};

template <auto... Calls>
void watch() {
  ((fileCalls().*Calls = Watched<Calls>::ask), ...);
}

constexpr char kText[] = "[A\\B]\n\"n\"=ulong:1\n\n";
constexpr char kChanged[] = "[A\\B]\n\"n\"=ulong:2\n\n";

class StoreFailures : public StoreTest {
 protected:
  StoreFailures() {
    s_real = fileCalls();
    watch<&FileCalls::resolve, &FileCalls::open, &FileCalls::create, &FileCalls::createForAll,
          &FileCalls::read, &FileCalls::write, &FileCalls::flush, &FileCalls::lock,
          &FileCalls::close, &FileCalls::status, &FileCalls::statusOf, &FileCalls::remove,
          &FileCalls::link, &FileCalls::rename, &FileCalls::exchange, &FileCalls::flushDirectory>();
  }

  // What comes of a save in which one call fails.
  std::string saveFailingAt(int callsLeft) {
    restartWith(kText);
    m_folder.write("HKEY_LOCAL_MACHINE.cfg_old", "older");
    EXPECT_EQ(OpenKey("A\\B").setNumber("n", 2), 0);
    s_callsLeft = callsLeft;
    const bool saved = save() == 0;
    s_callsLeft = kNever;
    if (!saved) {
      EXPECT_NE(LTLib::lastStoreFailure(), "");
      EXPECT_EQ(readFile(store()), kText);
      EXPECT_EQ(readFile(store() + "_old"), "older");
      EXPECT_FALSE(fs::exists(store() + "_new"));
      EXPECT_TRUE(locksAreFree());
      EXPECT_EQ(save(), 0) << "the next one works";
    }
    EXPECT_EQ(readFile(store()), kChanged);
    EXPECT_EQ(readFile(store() + "_old"), kText);
    fs::remove(store() + "_tmp");
    return saved ? "works " : "fails ";
  }

  // What comes of a load in which one call fails.
  std::string loadFailingAt(int callsLeft) {
    s_callsLeft = callsLeft;
    try {
      EXPECT_TRUE(load());
      return showRoot().empty() ? "empty " : "whole ";
    } catch (const std::length_error&) {
      return "no lock ";
    } catch (const QSException& caught) {
      EXPECT_EQ(caught.Result(), LTLib::kFailure);
      const bool locking = caught.What().find("cannot be locked") != std::string::npos;
      return locking ? "not locked " : caught.What() + ' ';
    }
  }
};

// The first six look at the store's place, and open, tell and lock the folder's identity, whose name
// is looked at twice if need be. Status, removal of "_new", making, write, flush and close follow;
// then an exchange, or what stands in for it; the folder's flush and the last name.
TEST_F(StoreFailures, OfEachCallOfASave) {
  const std::string written = "fails fails fails fails works fails fails fails fails fails fails ";
  const auto unsupported = [](const char*, const char*) { return FileResult::kUnsupported; };
  const auto told = [this](int calls) {
    std::string outcomes;
    for (int call = 0; call < calls; ++call) {
      outcomes += saveFailingAt(call);
    }
    return outcomes;
  };
  if (!kOnWindows) {
    EXPECT_EQ(told(15), written + "fails fails fails works ");
  }
  s_real.exchange = unsupported;
  EXPECT_EQ(told(18), written + "fails works fails fails fails fails works ");
  s_real.link = unsupported;
  EXPECT_EQ(told(19), written + "fails works fails fails fails fails fails works ");
}

// The store's place, open, making, write and close of the folder's identity, open, two reads and
// close of it; open, telling, locking and its name; open, two reads and close of the store.
TEST_F(StoreFailures, OfEachCallOfALoad) {
  std::string told;
  for (int calls = 0; calls < 18; ++calls) {
    fs::remove(m_folder.path("qsconfig.dat"));
    restartWith(kText);
    told += loadFailingAt(calls);
    EXPECT_EQ(readFile(store()), kText);
    EXPECT_TRUE(locksAreFree());
    const bool unread = told.ends_with("empty ");
    EXPECT_EQ(save() == 0, !unread) << "what was not read is not replaced";
    EXPECT_EQ(showRoot(), unread ? "" : "A\nA/B|n|0|1\n");
    EXPECT_EQ(readFile(store()), kText);
  }
  EXPECT_EQ(told,
            "empty no lock no lock no lock no lock no lock no lock no lock whole "
            "no lock not locked not locked whole "
            "empty registry read failed registry read failed whole whole ");
}

// What is wrong with the text leaves the root to be read again, and other roots alone. What a
// reading brought stays, and of the next ones comes only what none before has brought.
TEST_F(StoreFailures, OfTheText) {
  restartWith("[A\\B]\n\"n\"=ulong:1\n\"n\"=ulong:7\n\"s\"=string:\"x\n");
  EXPECT_EQ(loadFailingAt(kNever), "registry read failed ");
  EXPECT_TRUE(load(REG_ROOT_USERS));
  for (const char* lines : {"\"n\"=ulong:1\n[]\n[C\\D]\n", "\"n\"=ulong:1\n\"N\"=ulong:7\n[]\n"}) {
    m_folder.write("HKEY_LOCAL_MACHINE.cfg", std::string("[A\\B]\n") + lines);
    EXPECT_LT(save(), 0);
    EXPECT_EQ(showRoot(), "A\nA/B|n|0|1\nA/B|n|0|7\n") << lines;
  }
  EXPECT_EQ(OpenKey("A\\B").remove("N") + OpenKey("A\\B").setNumber("n", 3), 0);
  m_folder.write("HKEY_LOCAL_MACHINE.cfg",
                 "[a\\b]\n\"N\"=ulong:1\n\"n\"=ulong:7\n\"n\"=ulong:9\n[C\\D]\n\"x\"=ulong:4\n");
  EXPECT_EQ(save(), 0);
  EXPECT_EQ(readFile(store()), "[A\\B]\n\"n\"=ulong:3\n\"n\"=ulong:9\n\n[C\\D]\n\"x\"=ulong:4\n\n");
}

}  // namespace
