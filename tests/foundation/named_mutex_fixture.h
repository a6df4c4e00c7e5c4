// Named mutexes of a test's own, and what tests ask of them again and again.
#ifndef LTLIB_TESTS_FOUNDATION_NAMED_MUTEX_FIXTURE_H
#define LTLIB_TESTS_FOUNDATION_NAMED_MUTEX_FIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/foundation/named_mutex.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

/// Removes what the system keeps of the mutex of that name.
void forgetMutex(const std::string& name);

/// A name that no other test and no other run of the tests uses.
class MutexName {
 public:
  MutexName() = default;
  ~MutexName() { forgetMutex(m_text); }
  MutexName(const MutexName&) = delete;
  MutexName& operator=(const MutexName&) = delete;

  [[nodiscard]] const std::string& text() const { return m_text; }
  [[nodiscard]] const char* c_str() const { return m_text.c_str(); }

 private:
  const std::string m_text = TempFolder().name();
};

/// The text of what `action` throws; empty when it throws nothing.
template <typename Action>
std::string failureOf(const Action& action) {
  try {
    action();
    return "";
  } catch (const QSException& error) {
    EXPECT_EQ(error.Result(), kFailure);
    EXPECT_STREQ(error.File(), "No specific file info");
    return error.What();
  }
}

inline std::string lockFailure(NamedMutex& mutex) {
  return failureOf([&] { mutex.lock(); });
}

/// Locks and unlocks, and gives what the lock threw.
inline std::string passFailure(NamedMutex& mutex) {
  std::string text = lockFailure(mutex);
  mutex.unlock();
  return text;
}

inline std::string constructionFailure(const char* name) {
  return failureOf([&] { const NamedMutex mutex(name); });
}

inline std::string cannotCreate(const std::string& name) {
  return "cannot create named LTLib::Mutex " + name;
}

inline std::string abandoned(const std::string& name) {
  return "cannot lock LTLib::NamedMutex " + name + " (abandoned)";
}

class NamedMutexTest : public testing::Test {
 protected:
  const MutexName m_name{};
  NamedMutex m_mutex{m_name.c_str()};
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_FOUNDATION_NAMED_MUTEX_FIXTURE_H
