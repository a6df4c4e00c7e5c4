// A user's source that reads the system's header ahead of the library's.
#include <windows.h>

#include "ltlib/ltlib.h"

static_assert(REG_SZ == 1 && REG_MULTI_SZ == 7 && REG_QWORD == 11);
static_assert(KEY_READ == 0x20019 && KEY_ALL_ACCESS == 0xF003F);

long closeRoot(QSRegistryManager& manager) {
  return manager.regCloseKey(HKEY_CURRENT_USER);
}
