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

int viewAccessOf(const Request& request, bool onFiles) {
  if (!request.view) {
    return 0;
  }
  const int access = LTLib::Platform::registryViewAccess(request.view == kNarrowView ? 32 : 64);
  if (onFiles || access == 0) {
    throw Failure(ExitCode::kUsage,
                  "--view chooses between the two parts of the operating system's registry, and " +
                      std::string(onFiles ? "store files have none" : "this system has one") +
                      "; leave it out");
  }
  return access;
}

[[noreturn]] void throwNoSystemRegistry() {
  throw Failure(ExitCode::kUsage,
                "this system has no registry of its own, so that there is no --backend os; leave"
                " it out to work on store files");
}

void demandSystemRegistry(QSWin32RegistryManager& system, enumRegRoot root) {
  constexpr int kNoRegistry = 120;
  void* key = nullptr;
  const int result = system.regOpenKeyEx(LTLib::predefinedRootHandle(root), "", 0, KEY_READ, &key);
  if (result == kNoRegistry) {
    throwNoSystemRegistry();
  }
  if (result == 0) {
    system.regCloseKey(key);
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
    throwNoSystemRegistry();
  }
}

// A manager has no state of its own: those made here reach what the instance of the process reaches.
Backend::Backend(const Request& request, enumRegRoot root) {
  static QSFileRegistryManager s_files;
  static QSWin32RegistryManager s_system;
  if (request.store || request.backend == kFileBackend) {
    if (request.store) {
      bindStore(*request.store, root);
    }
    m_manager = &s_files;
    m_viewAccess = viewAccessOf(request, m_onFiles);
    return;
  }
  if (request.backend == kSystemBackend) {
    demandSystemRegistry(s_system, root);
    m_manager = &s_system;
    m_onFiles = false;
    m_viewAccess = viewAccessOf(request, m_onFiles);
    return;
  }
  m_manager = dynamic_cast<QSRegistryManagerImpl*>(QSRegistryManager::GetInstance());
  if (m_manager == nullptr) {
    throw Failure(ExitCode::kStoreFailed, "the registry has ended already");
  }
  // The marker and the system have decided by now.
  m_onFiles = dynamic_cast<QSFileRegistryManager*>(m_manager) != nullptr;
  m_viewAccess = viewAccessOf(request, m_onFiles);
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
