#include <cstdlib>
#include <fstream>
#include <memory>

#include "tests/foundation/named_mutex_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/threads.h"

namespace LTLib::Testing {
namespace {

constexpr int kRounds = 200;

// No atomic: the thread sanitizer sees a lock that lets two threads in.
int s_rounds = 0;

// Each round reads a file and writes it again: two at once would lose one of their rounds.
void countInFile(const std::string& name, const std::string& path) {
  for (int i = 0; i < kRounds; ++i) {
    NamedMutex mutex(name.c_str());
    mutex.lock();
    long value = 0;
    std::ifstream(path) >> value;
    std::ofstream(path) << value + 1;
    ++s_rounds;
    mutex.unlock();
  }
}

const Scenario s_counter("counter", [](const std::vector<std::string>& arguments) {
  countInFile(arguments[0], arguments[1]);
  return 0;
});

TEST_F(NamedMutexTest, ExcludesProcessesAndThreads) {
  constexpr int kThreads = 4;
  const TempFolder folder;
  const std::string path = folder.write("count", "0");
  {
    ChildProcess first("counter", {m_name.text(), path});
    ChildProcess second("counter", {m_name.text(), path});
    runTogether(kThreads, [&](int) { countInFile(m_name.text(), path); });
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
  }
  EXPECT_EQ(readFile(path), std::to_string((kThreads + 2) * kRounds));
  EXPECT_EQ(s_rounds, kThreads * kRounds);
}

// Takes the mutex, tells what the lock threw, and ends as it is told.
const Scenario s_holder("holder", [](const std::vector<std::string>& arguments) {
  NamedMutex mutex(arguments[0].c_str());
  tellParent("held" + lockFailure(mutex));
  const std::string order = hearParent();
  if (order == "exit") {
    std::exit(0);
  }
  mutex.unlock();
  return 0;
});

// The next owner is another process, another thread or the same thread as before.
TEST_F(NamedMutexTest, EachOwnersEndIsReportedOnceToTheNext) {
  const std::string told = abandoned(m_name.text());
  std::string first = "held";
  for (const std::string end : {"exit", "kill"}) {
    ChildProcess child("holder", {m_name.text()});
    EXPECT_EQ(child.hear(), first) << "before " << end;
    end == "kill" ? child.kill() : child.tell(end);
    child.wait();
    first = "held" + told;
  }
  std::thread([&] { EXPECT_EQ(lockFailure(m_mutex), told); }).join();
  EXPECT_EQ(lockFailure(m_mutex), told) << "the thread has ended";
  EXPECT_EQ(lockFailure(m_mutex), "") << "the thread is the owner";
  m_mutex.unlock();
  m_mutex.unlock();
  std::thread([&] { EXPECT_EQ(passFailure(m_mutex), ""); }).join();
}

// The object goes while its thread still owns the mutex, as in a failed clean-up.
TEST_F(NamedMutexTest, AThreadOwnsBeyondItsObject) {
  std::thread([&] {
    auto gone = std::make_unique<NamedMutex>(m_name.c_str());
    gone->lock();
    gone.reset();
    NamedMutex again(m_name.c_str());
    EXPECT_EQ(passFailure(again), "");
  }).join();
  EXPECT_EQ(passFailure(m_mutex), abandoned(m_name.text()));
}

}  // namespace
}  // namespace LTLib::Testing
