// A key of a test's own in the operating system's registry, gone with all below it at the end.
#ifndef LTLIB_TESTS_SUPPORT_PRIVATE_KEY_H
#define LTLIB_TESTS_SUPPORT_PRIVATE_KEY_H

#include <string>

#include "ltlib/registry/win32_registry_manager.h"

namespace LTLib::Testing {

class PrivateKey {
 public:
  PrivateKey();
  ~PrivateKey();
  PrivateKey(const PrivateKey&) = delete;
  PrivateKey& operator=(const PrivateKey&) = delete;

  /// The root's handle, and the key's path below it with that of a sub-key.
  [[nodiscard]] static void* root() { return predefinedRootHandle(REG_ROOT_CURRENT_USER); }
  [[nodiscard]] std::string path(const std::string& subKey = "") const;

  /// The open key.
  [[nodiscard]] void* get() const { return m_key; }

  [[nodiscard]] QSWin32RegistryManager& manager() { return m_manager; }

 private:
  bool removeTree(const std::string& path);

  QSWin32RegistryManager m_manager;
  std::string m_path;
  void* m_key = nullptr;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_PRIVATE_KEY_H
