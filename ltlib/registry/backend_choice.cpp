#include "ltlib/registry/backend_choice.h"

#include <atomic>

#include "ltlib/fileregistry/file_registry_manager.h"
#include "ltlib/foundation/do_once.h"

namespace LTLib::detail {

// Without the marker the operating system's registry would serve; a system that has none gets the
// file backend all the same, since anything else would lose every write in silence.
std::unique_ptr<QSRegistryManagerImpl> chooseBackend() {
  return std::make_unique<QSFileRegistryManager>();
}

}  // namespace LTLib::detail

namespace {

ltDoOnce_t s_once;
std::atomic<QSRegistryManagerImpl*> s_instance{nullptr};
std::atomic<bool> s_ended{false};

void buildInstance() {
  if (s_ended) {
    return;
  }
  s_instance.store(LTLib::detail::chooseBackend().release(), std::memory_order_release);
}

// Ends the instance with the library. The once-record stays done, and nothing is built from then
// on, so that a late caller gets null and no instance that would lose what it is given.
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

std::unique_ptr<QSRegistryManagerImpl> LTLib::detail::replaceInstance(
    std::unique_ptr<QSRegistryManagerImpl> instance) {
  (void)QSRegistryManager::GetInstance();
  return std::unique_ptr<QSRegistryManagerImpl>(s_instance.exchange(instance.release()));
}
