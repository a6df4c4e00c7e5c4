// What a host that knows nothing of the library has a component do for it.
#include <cstring>

#include "ltlib/ltlib.h"

namespace {

bool keepsAValue() {
  CQSRegValue value(REG_ROOT_CURRENT_USER, "%CompanyRoot%\\Hosted", "name");
  char* text = nullptr;
  return value.Write("text") == 0 && value.Read("name", text) == 0 &&
         std::strcmp(text, "text") == 0;
}

bool takesLocks() {
  LTLib::Mutex mutex;
  const LTLib::ScopedLock outer(mutex);
  const LTLib::ScopedLock inner(mutex);
  return true;
}

}  // namespace

extern "C" [[gnu::visibility("default")]] bool useLibrary() {
  return UID::Generate().Compare(UID::Generate()) != 0 && takesLocks() && keepsAValue();
}
