// Environment variables for the length of a scope.
#ifndef LTLIB_TESTS_SUPPORT_ENVIRONMENT_H
#define LTLIB_TESTS_SUPPORT_ENVIRONMENT_H

#include <cstdlib>
#include <list>
#include <optional>
#include <string>

#include "tests/support/system.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

/// Sets a variable, or removes it with no value; its former state comes back at the end.
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const std::optional<std::string>& value)
      : m_name(std::move(name)) {
    if (const char* before = std::getenv(m_name.c_str()); before != nullptr) {
      m_before = before;
    }
    setEnvironment(m_name, value);
  }
  ~ScopedEnvironment() { setEnvironment(m_name, m_before); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::string m_name;
  std::optional<std::string> m_before;
};

/// The variables of all roots: each names a file in the folder, or is removed.
class ScopedStores {
 public:
  explicit ScopedStores(const TempFolder* folder) {
    for (const std::string name : {"HKEY_CURRENT_USER", "HKEY_CURRENT_CONFIG", "HKEY_USERS",
                                   "HKEY_CLASSES_ROOT", "HKEY_LOCAL_MACHINE"}) {
      m_variables.emplace_back(
          name, folder != nullptr ? std::optional(folder->path(name + ".cfg")) : std::nullopt);
    }
  }

 private:
  std::list<ScopedEnvironment> m_variables;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_ENVIRONMENT_H
