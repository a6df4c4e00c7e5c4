// What the loader knows of one class, and the index that finds it.
#ifndef LTLIB_COMPONENT_FACTORY_DLL_H
#define LTLIB_COMPONENT_FACTORY_DLL_H

#include <atomic>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "ltlib/component/dll_loader.h"

/// A class has the factory of one form at most. The fields are atomic since `createUnknown` is read
/// without a lock, and since the destructor of a registrar resets them all under the factory lock
/// alone.
struct iqsDllLoader::FactoryDll {
  FactoryDll(std::string_view id, std::string_view path) : classId(id), dllPath(path) {}

  const std::string classId;
  std::atomic<CreateUnknown> createUnknown{nullptr};  // written under the factory lock
  std::atomic<std::uint32_t> loadCount{0};            // rises from 0 and falls under the load lock
  std::atomic<CreatePlain> createPlain{nullptr};      // factory lock
  std::atomic<ReleasePlain> release{nullptr};         // factory lock
  std::atomic<void*> module{nullptr};                 // load lock
  const std::string dllPath;                          // as the registry had it, never expanded
  std::string loadFailure;  // load lock; the system's words for the last failure
};

namespace LTLib::detail {

/// Finds records by the content of their identifiers, without a lock: a record that is in stays in,
/// and a table that the index outgrew stays, too. Who still looks into that one misses the newest
/// records at worst, and meets them under the lock of those who add.
class FactoryIndex {
 public:
  FactoryIndex();

  /// Null when there is none.
  [[nodiscard]] iqsDllLoader::FactoryDll* find(std::string_view id) const noexcept;

  /// One thread at a time. Requires: no record of that identifier is in. Borrows the record.
  void add(iqsDllLoader::FactoryDll& record);

 private:
  // A power of two of places, half of which are in use at most. A record lies at the place that the
  // hash of its identifier gives, or at the next free one behind that.
  using Table = std::vector<std::atomic<iqsDllLoader::FactoryDll*>>;

  static void put(Table& table, iqsDllLoader::FactoryDll& record) noexcept;
  void grow();

  // Each twice as large as the one before: the old ones together take no more than the last.
  std::deque<Table> m_tables;
  std::atomic<const Table*> m_table;  // the last one, for those who look
  std::size_t m_records = 0;
};

}  // namespace LTLib::detail

#endif  // LTLIB_COMPONENT_FACTORY_DLL_H
