// Environment variables for the length of a scope.
#ifndef LTLIB_TESTS_SUPPORT_ENVIRONMENT_H
#define LTLIB_TESTS_SUPPORT_ENVIRONMENT_H

#include <optional>
#include <string>

namespace LTLib::Testing {

/// Sets a variable, or removes it with no value; its former state comes back at the end.
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const std::optional<std::string>& value);
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  static void set(const std::string& name, const std::optional<std::string>& value);

  std::string m_name;
  std::optional<std::string> m_before;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_ENVIRONMENT_H
