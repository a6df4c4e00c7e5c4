#include "ltlib/component/factory_dll.h"

#include <functional>

namespace LTLib::detail {

std::size_t FactoryIndex::chainOf(std::string_view id) noexcept {
  return std::hash<std::string_view>()(id) % kChains;
}

iqsDllLoader::FactoryDll* FactoryIndex::find(std::string_view id) const noexcept {
  iqsDllLoader::FactoryDll* record = m_chains[chainOf(id)].load(std::memory_order_acquire);
  while (record != nullptr && record->classId != id) {
    record = record->next;
  }
  return record;
}

void FactoryIndex::add(iqsDllLoader::FactoryDll& record) noexcept {
  Chain& chain = m_chains[chainOf(record.classId)];
  record.next = chain.load(std::memory_order_relaxed);
  chain.store(&record, std::memory_order_release);
}

}  // namespace LTLib::detail
