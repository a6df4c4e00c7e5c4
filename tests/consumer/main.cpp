#include <cstdio>
#include <cstring>

#include "ltlib/ltlib.h"

// An exception that the library makes arrives here with its type and its text.
int main() {
  try {
    throw QSException("main", __LINE__, LTLib::kNotFound, "thrown by a user");
  } catch (const QSException& error) {
    std::puts(error.what());
    return std::strcmp(error.what(), "thrown by a user") == 0 ? 0 : 1;
  }
}
