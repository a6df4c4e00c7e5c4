#include "ltlib/foundation/named_mutex.h"

#include <gtest/gtest.h>

#include <thread>

#include "ltlib/foundation/kqsresult.h"
#include "tests/support/child_process.h"
#include "tests/support/named_mutex_name.h"

namespace {

using LTLib::NamedMutex;
using LTLib::Testing::ChildProcess;
using LTLib::Testing::MutexName;
using LTLib::Testing::Scenario;

constexpr char kObtained[] = "";

// What lock throws, or nothing.
std::string lockText(NamedMutex& mutex) {
  try {
    mutex.lock();
    return kObtained;
  } catch (const QSException& error) {
    EXPECT_EQ(error.Result(), LTLib::kFailure);
    EXPECT_STREQ(error.File(), "No specific file info");
    return error.What();
  }
}

std::string abandonedText(const MutexName& name) {
  return "cannot lock LTLib::NamedMutex " + name.text() + " (abandoned)";
}

void expectFree(NamedMutex& mutex) {
  EXPECT_EQ(lockText(mutex), kObtained);
  mutex.unlock();
}

// Takes the mutex, says so, and ends or goes on as it is told.
const Scenario s_holder("holder", [](const std::vector<std::string>& arguments) {
  NamedMutex mutex(arguments[0].c_str());
  LTLib::Testing::tellParent("held" + lockText(mutex));
  for (std::string order = LTLib::Testing::hearParent(); !order.empty();
       order = LTLib::Testing::hearParent()) {
    if (order == "unlock") {
      mutex.unlock();
      LTLib::Testing::tellParent("unlocked");
    } else if (order == "exit") {
      std::exit(0);
    } else if (order == "crash") {
      LTLib::Testing::crash();
    }
  }
  return 0;
});

TEST(NamedMutex, ExcludesAnotherProcess) {
  const MutexName name;
  NamedMutex mutex(name.c_str());
  mutex.lock();
  ChildProcess child("holder", {name.text()});
  child.tell("unlock");
  mutex.unlock();
  EXPECT_EQ(child.hear(), "held");
  EXPECT_EQ(child.hear(), "unlocked");
  expectFree(mutex);
}

TEST(NamedMutex, ADeadOwnersProcessIsReportedOnce) {
  for (const char* end : {"exit", "crash", "kill"}) {
    SCOPED_TRACE(end);
    const MutexName name;
    NamedMutex mutex(name.c_str());
    ChildProcess child("holder", {name.text()});
    ASSERT_EQ(child.hear(), "held");
    if (end == std::string("kill")) {
      child.kill();
    } else {
      child.tell(end);
    }
    EXPECT_EQ(lockText(mutex), abandonedText(name));
    EXPECT_EQ(lockText(mutex), kObtained) << "the thread is the owner";
    mutex.unlock();
    mutex.unlock();
    expectFree(mutex);
  }
}

}  // namespace
