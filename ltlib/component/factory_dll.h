// What the loader knows of one class, and the index that finds it.
#ifndef LTLIB_COMPONENT_FACTORY_DLL_H
#define LTLIB_COMPONENT_FACTORY_DLL_H

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "ltlib/component/dll_loader.h"

/// A class has the factory of one form at most. The fields are atomic since `createUnknown` is read
/// without a lock, and since the destructor of a registrar resets them all under the factory lock
/// alone. What a creation touches comes first, in one line of the cache.
struct alignas(64) iqsDllLoader::FactoryDll {
  FactoryDll(std::string_view id, std::string_view path) : classId(id), dllPath(path) {}

  const std::string classId;
  FactoryDll* next = nullptr;  // in its chain of the index; constant once added
  std::atomic<CreateUnknown> createUnknown{nullptr};  // written under the factory lock
  std::atomic<std::uint32_t> loadCount{0};            // rises from 0 and falls under the load lock
  std::atomic<CreatePlain> createPlain{nullptr};      // factory lock
  std::atomic<ReleasePlain> release{nullptr};         // factory lock
  std::atomic<void*> module{nullptr};                 // load lock
  const std::string dllPath;                          // as the registry had it, never expanded
  std::string loadFailure;  // load lock; the system's words for the last failure
};

namespace LTLib::detail {

/// Finds records by the content of their identifiers. A record that is in stays in, so that those
/// who look need no lock.
class FactoryIndex {
 public:
  /// Null when there is none.
  [[nodiscard]] iqsDllLoader::FactoryDll* find(std::string_view id) const noexcept;

  /// One thread at a time. Requires: no record of that identifier is in. Borrows the record.
  void add(iqsDllLoader::FactoryDll& record) noexcept;

 private:
  using Chain = std::atomic<iqsDllLoader::FactoryDll*>;

  // A power of two well above the number of classes that a product has.
  static constexpr std::size_t kChains = 2048;

  static std::size_t chainOf(std::string_view id) noexcept;

  std::array<Chain, kChains> m_chains{};
};

}  // namespace LTLib::detail

#endif  // LTLIB_COMPONENT_FACTORY_DLL_H
