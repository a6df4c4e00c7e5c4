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

void ScopedEnvironment::set(const std::string& name, const std::optional<std::string>& value) {
  if (value.has_value()) {
    ::setenv(name.c_str(), value->c_str(), 1);
  } else {
    ::unsetenv(name.c_str());
  }
}

}  // namespace LTLib::Testing
