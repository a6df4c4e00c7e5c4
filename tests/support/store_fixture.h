// A process's file registry made fresh for each test, with its stores in a folder of the test's.
#ifndef LTLIB_TESTS_SUPPORT_STORE_FIXTURE_H
#define LTLIB_TESTS_SUPPORT_STORE_FIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "ltlib/fileregistry/file_registry_manager.h"
#include "ltlib/fileregistry/tree/roots.h"
#include "ltlib/platform/files.h"
#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

/// The root of most tests, and the handle that stands for it.
inline constexpr enumRegRoot kMachine = REG_ROOT_LOCAL_MACHINE;
inline void* const kRoot = predefinedRootHandle(kMachine);

/// Forgets every tree, every load and every lock's name, as a new process does.
void forgetStores();

/// The tree of a root as it stands, in the form of showTree.
[[nodiscard]] std::string showRoot(enumRegRoot root = kMachine);

/// An open handle of the file backend.
class OpenKey {
 public:
  explicit OpenKey(const std::string& path, enumRegRoot root = kMachine);
  ~OpenKey();
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  [[nodiscard]] void* get() const { return m_handle; }

  int set(const char* name, const std::string& bytes, unsigned int type = REG_SZ);
  int setNumber(const char* name, std::uint32_t number);
  int remove(const char* name) { return m_manager.regDeleteValue(m_handle, name); }
  /// The value as two queries give it, size and data; "<-1>" for a failure.
  [[nodiscard]] std::string text(const char* name);

 private:
  QSFileRegistryManager m_manager;
  void* m_handle = nullptr;
};

class StoreTest : public testing::Test {
 protected:
  StoreTest();
  ~StoreTest() override;

  [[nodiscard]] std::string store(enumRegRoot root = kMachine) const;
  /// Lays down a store file for what is then as good as a new process.
  void restartWith(const std::string& text);
  [[nodiscard]] static bool load(enumRegRoot root = kMachine);
  long save() { return m_manager.saveConfiguration(kMachine); }
  /// Whether another may take every lock that a load or save takes.
  [[nodiscard]] bool locksAreFree() const;

  TempFolder m_folder;
  QSFileRegistryManager m_manager;

 private:
  const ScopedStores m_environment{&m_folder};
  Platform::FileCalls m_calls;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_STORE_FIXTURE_H
