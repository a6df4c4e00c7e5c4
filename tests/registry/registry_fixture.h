// A place in the registry of the test's own, on whichever backend serves.
#ifndef LTLIB_TESTS_REGISTRY_REGISTRY_FIXTURE_H
#define LTLIB_TESTS_REGISTRY_REGISTRY_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ltlib/ltlib.h"
#include "tests/registry/backend_facts.h"
#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

inline constexpr enumRegRoot kUser = REG_ROOT_CURRENT_USER;

/// A folder for the store files of all roots, for the length of the object.
class StoreFolder {
 public:
  StoreFolder();

  /// The store file of a root.
  [[nodiscard]] std::string store(enumRegRoot root) const;
  [[nodiscard]] const TempFolder& folder() const { return m_folder; }

 private:
  TempFolder m_folder;
  std::vector<std::unique_ptr<ScopedEnvironment>> m_variables;
};

/// The folder of this test program, ready before any root is touched.
[[nodiscard]] const StoreFolder& stores();

/// Tests below a private key of HKEY_CURRENT_USER, which is deleted afterwards.
class RegistryObjects : public testing::Test {
 protected:
  RegistryObjects();
  ~RegistryObjects() override;

  /// A path below the private key.
  [[nodiscard]] std::string path(const std::string& below) const;
  [[nodiscard]] CQSRegKey key(const std::string& below) const;
  [[nodiscard]] CQSRegValue value(const std::string& below, const char* name) const;

  /// Writes a number, so that the key is there.
  void make(const std::string& below) const;

  const BackendFacts& m_facts = facts();

 private:
  std::string m_base;
};

/// An open handle of the manager, for what the objects do not show.
class RawKey {
 public:
  explicit RawKey(const std::string& path);
  ~RawKey();
  RawKey(const RawKey&) = delete;
  RawKey& operator=(const RawKey&) = delete;

  [[nodiscard]] void* get() const { return m_handle; }
  int set(const char* name, unsigned int type, const std::string& bytes) const;

 private:
  void* m_handle = nullptr;
};

/// The names of a walk to its end, whose result has to be that of the backend.
template <class Walk>
std::vector<std::string> namesOf(Walk&& walk) {
  std::vector<std::string> names;
  std::string name;
  QSResult result = walk.GetFirst(name);
  for (; result >= 0; result = walk.GetNext(name)) {
    names.push_back(name);
  }
  EXPECT_EQ(result, facts().endOfWalk);
  return names;
}

/// A text or list record without the terminators that the backend counts, or bytes as they are.
[[nodiscard]] std::string contentOf(const CQSRegValue::e_data_struct& data);

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_REGISTRY_REGISTRY_FIXTURE_H
