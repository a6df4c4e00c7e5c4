// The backend over the operating system's registry where there is none, as a user has it.
#include <gtest/gtest.h>

#include "ltlib/ltlib.h"

namespace {

TEST(NoSystemRegistry, EveryOperationFailsAndStoresNothing) {
  constexpr int kNotImplemented = 120;
  QSWin32RegistryManager manager;
  void* const root = LTLib::predefinedRootHandle(REG_ROOT_CURRENT_USER);
  void* key = nullptr;
  char name[] = "n";
  unsigned char bytes[] = "text";
  unsigned int type = REG_SZ;
  unsigned int size = sizeof bytes;
  LTLib::RegistryValue whole;
  for (const int result :
       {manager.regOpenKeyEx(root, "A", 0, KEY_READ, &key), manager.regCreateKey(root, "A", &key),
        manager.regCreateKeyEx(root, "A", nullptr, 0, KEY_READ, &key, &type),
        manager.regSetValueEx(root, name, REG_SZ, bytes, size),
        manager.regSetValueEx(root, name, REG_BINARY, bytes, size),
        manager.regQueryValueEx(root, name, &type, bytes, &size),
        manager.queryWholeValue(root, name, whole), manager.regEnumKeyEx(root, 0, name, &size),
        manager.regEnumKey(root, 0, name, size),
        manager.regEnumValue(root, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
        manager.regDeleteValue(root, name), manager.regDeleteKey(root, "A"),
        manager.regCloseKey(root)}) {
    EXPECT_EQ(result, kNotImplemented);
  }
  EXPECT_EQ(key, nullptr);
}

}  // namespace
