// A name for a named mutex that no other test and no other run of the tests uses.
#ifndef LTLIB_TESTS_SUPPORT_NAMED_MUTEX_NAME_H
#define LTLIB_TESTS_SUPPORT_NAMED_MUTEX_NAME_H

#include <string>

namespace LTLib::Testing {

class MutexName {
 public:
  /// The name is `prefix`, an identifier and `suffix`.
  explicit MutexName(const std::string& prefix = "ltlib-test-", const std::string& suffix = "");

  /// Removes what the system keeps of the mutex.
  ~MutexName();
  MutexName(const MutexName&) = delete;
  MutexName& operator=(const MutexName&) = delete;

  [[nodiscard]] const std::string& text() const { return m_text; }
  [[nodiscard]] const char* c_str() const { return m_text.c_str(); }

 private:
  std::string m_text;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_NAMED_MUTEX_NAME_H
