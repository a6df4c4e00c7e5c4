#include "ltlib/registry/registry_watch.h"

#include <utility>

#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/change_watch.h"

namespace LTLib {

struct RegistryWatch::Open {
  std::string what;
  Platform::ChangeWatchHandle watch;
};

namespace {

[[noreturn]] void failToWatch(int line, const std::string& what, const std::string& reason) {
  throw QSException("kRegistryWatch", line, kFailure,
                    (what + " cannot be watched: " + reason).c_str());
}

}  // namespace

RegistryWatch::RegistryWatch(std::unique_ptr<Open> open) noexcept : m_open(std::move(open)) {}
RegistryWatch::~RegistryWatch() = default;
RegistryWatch::RegistryWatch(RegistryWatch&& other) noexcept = default;
RegistryWatch& RegistryWatch::operator=(RegistryWatch&& other) noexcept = default;

RegistryWatch RegistryWatch::ofStore(const std::string& pathname) {
  std::string reason;
  auto open = std::make_unique<Open>();
  open->what = "the store " + pathname;
  open->watch = Platform::watchFile(detail::locateStore(pathname), reason);
  if (open->watch == nullptr) {
    failToWatch(__LINE__, open->what, reason);
  }
  return RegistryWatch(std::move(open));
}

RegistryWatch RegistryWatch::ofSystemKey(enumRegRoot root, const std::string& path) {
  std::string reason;
  const char* const name = registryRootName(root);
  auto open = std::make_unique<Open>();
  open->what = std::string(name != nullptr ? name : "a root") + '\\' + path;
  open->watch = Platform::watchSystemKey(predefinedRootHandle(root), path, reason);
  if (open->watch == nullptr) {
    failToWatch(__LINE__, open->what, reason);
  }
  return RegistryWatch(std::move(open));
}

std::intptr_t RegistryWatch::handle() const noexcept {
  return Platform::readinessOf(*m_open->watch);
}

bool RegistryWatch::wait(std::chrono::milliseconds limit) const noexcept {
  return Platform::awaitChange(*m_open->watch, limit);
}

bool RegistryWatch::take() {
  const Platform::TakenChange taken = Platform::takeChange(*m_open->watch);
  if (taken == Platform::TakenChange::kNoMore) {
    failToWatch(__LINE__, m_open->what, "it is no longer where it was");
  }
  return taken == Platform::TakenChange::kSome;
}

}  // namespace LTLib
