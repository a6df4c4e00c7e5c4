// A user's source that reads the system's header behind the library's.
#include "ltlib/ltlib.h"

#include <windows.h>

static_assert(REG_SZ == 1 && REG_MULTI_SZ == 7 && REG_QWORD == 11);
static_assert(KEY_READ == 0x20019 && KEY_ALL_ACCESS == 0xF003F);

long openRoot(QSRegistryManager& manager, HKEY* key) {
  return manager.regOpenKeyEx(HKEY_CURRENT_USER, "", 0, KEY_READ, reinterpret_cast<void**>(key));
}
