#include <windows.h>

#include <cstdlib>

#include "tests/support/environment.h"

namespace LTLib::Testing {

ScopedEnvironment::ScopedEnvironment(std::string name, const std::optional<std::string>& value)
    : m_name(std::move(name)) {
  if (const char* before = std::getenv(m_name.c_str()); before != nullptr) {
    m_before = before;
  }
  set(m_name, value);
}

ScopedEnvironment::~ScopedEnvironment() {
  set(m_name, m_before);
}

// The C runtime takes an empty value for a removal, so that one is cut short where it lies;
// children take theirs from the system.
void ScopedEnvironment::set(const std::string& name, const std::optional<std::string>& value) {
  const bool empty = value.has_value() && value->empty();
  _putenv_s(name.c_str(), empty ? "x" : value.value_or("").c_str());
  if (empty) {
    *std::getenv(name.c_str()) = '\0';
    SetEnvironmentVariableA(name.c_str(), "");
  }
}

}  // namespace LTLib::Testing
