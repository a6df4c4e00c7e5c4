// The one instance of the registry manager: made once, by the marker or as a tool demands, and ended
// with the library.
#include "ltlib/registry/backend_choice.h"

#include <atomic>

#include "ltlib/fileregistry/file_registry_manager.h"
#include "ltlib/foundation/do_once.h"
#include "ltlib/platform/files.h"
#include "ltlib/platform/library_path.h"
#include "ltlib/platform/os_registry.h"
#include "ltlib/registry/win32_registry_manager.h"

namespace LTLib::detail {

namespace {

bool markerIsThere() {
  Platform::FileHandle marker;
  return Platform::openFile(Platform::markerPath("registry.dat"), Platform::Links::kFollowed,
                            marker) == Platform::FileResult::kDone;
}

}  // namespace

// A system without a registry of its own gets the file backend without the marker too: anything
// else would lose every write in silence.
std::unique_ptr<QSRegistryManagerImpl> chooseBackend() {
  if (!Platform::hasSystemRegistry() || markerIsThere()) {
    return std::make_unique<QSFileRegistryManager>();
  }
  return std::make_unique<QSWin32RegistryManager>();
}

}  // namespace LTLib::detail

namespace {

constinit ltDoOnce_t s_once;
// Atomic for late callers: the end takes the instance away without asking `s_once` again.
constinit std::atomic<QSRegistryManagerImpl*> s_instance{nullptr};
constinit std::atomic<bool> s_ended{false};

// The child of a fork runs an initialiser again that was cut off, so that there may be an instance.
void install(std::unique_ptr<QSRegistryManagerImpl> manager) {
  if (!s_ended && s_instance == nullptr) {
    s_instance.store(manager.release(), std::memory_order_release);
  }
}

void buildInstance() {
  install(LTLib::detail::chooseBackend());
}

template <class Manager>
void buildAs() {
  install(std::make_unique<Manager>());
}

// Whether the instance is of that class, once there is one.
template <class Manager>
bool force() {
  // Where the instance was made already nothing happens, and the cast tells of which class it is.
  ltDoOnce(s_once, buildAs<Manager>);
  return dynamic_cast<Manager*>(s_instance.load(std::memory_order_acquire)) != nullptr;
}

// Ends the instance with the library. A late caller gets null and not a second instance, nor a
// first one that nobody would end.
struct InstanceEnd {
  ~InstanceEnd() {
    s_ended = true;
    delete s_instance.exchange(nullptr);
  }
};
const InstanceEnd s_instanceEnd;

}  // namespace

QSRegistryManager* QSRegistryManager::GetInstance() {
  ltDoOnce(s_once, buildInstance);
  return s_instance.load(std::memory_order_acquire);
}

bool LTLib::forceRegistryBackend(RegistryBackend backend) {
  if (backend == RegistryBackend::kFiles) {
    return force<QSFileRegistryManager>();
  }
  return Platform::hasSystemRegistry() && force<QSWin32RegistryManager>();
}

std::unique_ptr<QSRegistryManagerImpl> LTLib::detail::replaceInstance(
    std::unique_ptr<QSRegistryManagerImpl> instance) {
  (void)QSRegistryManager::GetInstance();
  return std::unique_ptr<QSRegistryManagerImpl>(s_instance.exchange(instance.release()));
}
