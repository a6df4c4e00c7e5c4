// Under the load lock count, module and reason are those of one moment; the factory's fields, which
// change under another lock, are atomic.
#include "ltlib/component/class_report.h"

#include "ltlib/component/dll_loader_tables.h"

std::optional<LTLib::ClassReport> LTLib::reportClass(const iqsID& id) {
  detail::DllLoaderTables* const tables = detail::dllLoaderTables();
  if (tables == nullptr || id.text() == nullptr) {
    return std::nullopt;
  }
  const iqsDllLoader::FactoryDll* const record = tables->factories.find(id.text());
  if (record == nullptr) {
    return std::nullopt;
  }
  const ScopedLock hold(tables->loadLock);
  const bool isPlain = record->createPlain != nullptr;
  return ClassReport{.library = record->dllPath,
                     .loadCount = record->loadCount,
                     .isLoaded = record->module != nullptr,
                     .hasFactory = isPlain || record->createUnknown != nullptr,
                     .isPlain = isPlain,
                     .loadFailure = record->loadFailure};
}
