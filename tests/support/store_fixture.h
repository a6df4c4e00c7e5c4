// A process's file registry made fresh for each test, with its stores in a folder of the test's.
#ifndef LTLIB_TESTS_SUPPORT_STORE_FIXTURE_H
#define LTLIB_TESTS_SUPPORT_STORE_FIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "ltlib/fileregistry/file_registry_manager.h"
#include "ltlib/fileregistry/tree/roots.h"
#include "ltlib/platform/files.h"
#include "tests/support/environment.h"
#include "tests/support/open_key.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

/// The handle of the root of most tests.
inline void* const kRoot = predefinedRootHandle(kMachine);

/// Forgets every tree, every load and every lock's name, as a new process does.
void forgetStores();

/// The tree of a root as it stands, in the form of showTree.
[[nodiscard]] std::string showRoot(enumRegRoot root = kMachine);

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
