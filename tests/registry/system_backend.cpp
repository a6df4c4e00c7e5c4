// Puts the system's backend in the place of the one that was chosen, for the whole program.
#include <gtest/gtest.h>

#include <memory>

#include "ltlib/registry/backend_choice.h"
#include "ltlib/registry/win32_registry_manager.h"

namespace {

class SystemBackend : public testing::Environment {
 public:
  void SetUp() override { replace(std::make_unique<QSWin32RegistryManager>()); }
  void TearDown() override { replace(nullptr); }

 private:
  void replace(std::unique_ptr<QSRegistryManagerImpl> manager) {
    m_other = LTLib::detail::replaceInstance(manager != nullptr ? std::move(manager)
                                                                : std::move(m_other));
  }

  std::unique_ptr<QSRegistryManagerImpl> m_other;
};

testing::Environment* const s_environment = testing::AddGlobalTestEnvironment(new SystemBackend);

}  // namespace
