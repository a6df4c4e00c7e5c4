// An open handle of a manager, for what the registry's objects do not show.
#ifndef LTLIB_TESTS_SUPPORT_OPEN_KEY_H
#define LTLIB_TESTS_SUPPORT_OPEN_KEY_H

#include <gtest/gtest.h>

#include <string>

#include "ltlib/fileregistry/file_registry_manager.h"

namespace LTLib::Testing {

/// The root of most tests of the file backend.
inline constexpr enumRegRoot kMachine = REG_ROOT_LOCAL_MACHINE;
inline QSFileRegistryManager s_fileManager;

class OpenKey {
 public:
  explicit OpenKey(const std::string& path, enumRegRoot root = kMachine,
                   QSRegistryManager& manager = s_fileManager)
      : m_manager(manager) {
    EXPECT_EQ(m_manager.regOpenKeyEx(predefinedRootHandle(root), path.c_str(), 0, KEY_ALL_ACCESS,
                                     &m_handle),
              0);
  }
  ~OpenKey() { EXPECT_EQ(m_manager.regCloseKey(m_handle), 0); }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  [[nodiscard]] void* get() const { return m_handle; }

  int set(const char* name, const std::string& bytes, unsigned int type = REG_SZ) const {
    return m_manager.regSetValueEx(m_handle, name, type,
                                   reinterpret_cast<const unsigned char*>(bytes.data()),
                                   static_cast<unsigned int>(bytes.size()));
  }
  int setNumber(const char* name, std::uint32_t number) const {
    return set(name, {reinterpret_cast<const char*>(&number), sizeof number}, REG_DWORD);
  }
  int remove(const char* name) const { return m_manager.regDeleteValue(m_handle, name); }

  /// The value as two queries give it, size and data; "<-1>" for a failure.
  [[nodiscard]] std::string text(const char* name) const {
    std::string data;
    unsigned int size = 0;
    const auto query = [&](unsigned char* bytes) {
      unsigned int type = 0;
      return m_manager.regQueryValueEx(m_handle, const_cast<char*>(name), &type, bytes, &size);
    };
    if (query(nullptr) != 0) {
      return "<-1>";
    }
    data.resize(size + 1);
    const int result = query(reinterpret_cast<unsigned char*>(data.data()));
    return result == 0 ? data.substr(0, size) : "<-1>";
  }

 private:
  QSRegistryManager& m_manager;
  void* m_handle = nullptr;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_OPEN_KEY_H
