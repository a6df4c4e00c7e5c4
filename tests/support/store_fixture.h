// A process's file registry made fresh for each test, with its stores in a folder of the test's.
#ifndef LTLIB_TESTS_SUPPORT_STORE_FIXTURE_H
#define LTLIB_TESTS_SUPPORT_STORE_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ltlib/fileregistry/file_registry_manager.h"
#include "ltlib/fileregistry/tree_state.h"
#include "ltlib/platform/files.h"
#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

/// Forgets every tree, every load and every lock's name, as a new process does.
void forgetStores();

/// The tree of a root as it stands, in the form of showTree.
[[nodiscard]] std::string showRoot(enumRegRoot root);

/// The names of an open manager's key handle, closed at the end.
class OpenKey {
 public:
  OpenKey(QSRegistryManager& manager, enumRegRoot root, const char* path);
  ~OpenKey();
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  [[nodiscard]] void* get() const { return m_handle; }

  int setText(const char* name, const std::string& text, unsigned int type = 1) const;
  int setNumber(const char* name, std::uint32_t number) const;
  /// The value as two queries give it, size and data; "<-1>" for a failure.
  [[nodiscard]] std::string text(const char* name) const;

 private:
  QSRegistryManager& m_manager;
  void* m_handle = nullptr;
};

class StoreTest : public testing::Test {
 protected:
  StoreTest();
  ~StoreTest() override;

  [[nodiscard]] std::string store(enumRegRoot root = REG_ROOT_LOCAL_MACHINE) const;
  /// Whether another may take every lock that a load or save takes.
  [[nodiscard]] bool locksAreFree() const;
  [[nodiscard]] static int load(enumRegRoot root = REG_ROOT_LOCAL_MACHINE);

  TempFolder m_folder;
  QSFileRegistryManager m_manager;

 private:
  std::vector<std::unique_ptr<ScopedEnvironment>> m_environment;
  Platform::FileCalls m_calls;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_STORE_FIXTURE_H
