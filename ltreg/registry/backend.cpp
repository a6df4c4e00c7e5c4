#include "ltreg/registry/backend.h"

#include <chrono>

#include "ltlib/platform/tool_process.h"

namespace ltreg {
namespace {

void bindStore(const std::string& store, enumRegRoot root) {
  if (store.empty()) {
    throw Failure(ExitCode::kBadInput, "--store names no file; give the pathname of a store file");
  }
  // The library learns the file of a root from the environment alone, at its first touch of the root.
  if (!LTLib::Platform::setEnvironmentVariable(LTLib::registryRootName(root), store)) {
    throw Failure(ExitCode::kStoreFailed, "the environment has no room for the store's name");
  }
}

}  // namespace

void chooseBackend(const Request& request) {
  if (request.lockTimeout > 0) {
    LTLib::limitStoreWaits(std::chrono::seconds(request.lockTimeout));
  }
  const bool system = request.backend == kSystemBackend;
  if (request.backend && !LTLib::forceRegistryBackend(system ? LTLib::RegistryBackend::kSystem
                                                             : LTLib::RegistryBackend::kFiles)) {
    throw Failure(ExitCode::kUsage,
                  "this system has no registry of its own, so that there is no --backend os; leave"
                  " it out to work on store files");
  }
}

Backend::Backend(const Request& request, enumRegRoot root) {
  if (request.store) {
    // A manager has no state of its own: this one reaches the same trees as the instance of the process.
    static QSFileRegistryManager s_files;
    bindStore(*request.store, root);
    m_manager = &s_files;
    return;
  }
  m_manager = dynamic_cast<QSRegistryManagerImpl*>(QSRegistryManager::GetInstance());
  if (m_manager == nullptr) {
    throw Failure(ExitCode::kStoreFailed, "the registry has ended already");
  }
  // The backend is not asked for by name: --backend, the marker and the system have decided by now.
  m_onFiles = dynamic_cast<QSFileRegistryManager*>(m_manager) != nullptr;
}

std::string Backend::storeOf(enumRegRoot root) const {
  std::string pathname = m_manager->GetConfigurationPathname(root);
  if (m_onFiles && pathname.empty()) {
    throw Failure(ExitCode::kStoreFailed,
                  std::string("the environment variable ") + LTLib::registryRootName(root) +
                      " is set to nothing, so that the root has no store file; unset it, or give"
                      " --store FILE");
  }
  return pathname;
}

}  // namespace ltreg
