#include <cstdio>
#include <string>

#include "ltlib/ltlib.h"

// A virtual call into the library, and an exception that the library's type information carries
// back: both need the installed libraries to find each other.
int main() {
  const std::string file = GetConfigurationPathname(REG_ROOT_USERS);
  try {
    throw QSException("main", __LINE__, LTLib::kNotFound, file.c_str());
  } catch (const QSException& error) {
    std::puts(error.what());
    return error.What().empty() ? 1 : 0;
  }
}
