#include "ltlib/component/dll_loader.h"

#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "ltlib/component/dll_loader_tables.h"
#include "ltlib/component/module_load.h"
#include "ltlib/platform/shared_library.h"
#include "ltlib/registry/reg_value.h"

namespace {

using FactoryDll = iqsDllLoader::FactoryDll;
using LTLib::ScopedLock;
using LTLib::detail::DllLoaderTables;
using LTLib::detail::dllLoaderTables;

constexpr char kValueName[] = "InprocServer";
constexpr std::size_t kTextSize = 1024;
constexpr std::uint32_t kPinned = std::numeric_limits<std::uint32_t>::max();

char* copyOf(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  return static_cast<char*>(std::memcpy(new char[size], text, size));
}

void reportNoEntry(const char* id, char** error) {
  if (error != nullptr) {
    char text[kTextSize];
    std::snprintf(text, sizeof text, "No DLL registered for CLSID %s", id);
    *error = copyOf(text);
  }
}

// A text that is there already is the one of an earlier failure, which tells more.
void reportNoLoad(const FactoryDll& record, char** error) {
  if (error != nullptr && *error == nullptr) {
    char text[kTextSize];
    std::snprintf(text, sizeof text, "DllLoader cannot load %s for CLSID %s",
                  record.dllPath.c_str(), record.classId.c_str());
    *error = copyOf(text);
  }
}

// Makes the class's record from its entry in the registry, unless another thread has done so; null
// without an entry. Not inline, since it runs once for a class, and each look-up would pay for the
// registers that it saves.
[[gnu::noinline]] FactoryDll* addFactory(DllLoaderTables& tables, const char* id, char** error) {
  const ScopedLock hold(tables.tableLock);
  if (FactoryDll* const known = tables.factories.find(id); known != nullptr) {
    return known;
  }
  CQSRegValue entry(REG_ROOT_LOCAL_MACHINE, (std::string("%CLASSID%\\") + id).c_str(), kValueName);
  char* path = nullptr;
  if (entry.Read(kValueName, path) < 0) {
    reportNoEntry(id, error);
    return nullptr;
  }
  auto record = std::make_unique<FactoryDll>(id, path);
  tables.factories.add(*record);
  return record.release();
}

// Looks without a lock first, which nearly always finds the class.
FactoryDll* findOrAddFactory(DllLoaderTables& tables, const char* id, char** error) {
  FactoryDll* const known = tables.factories.find(id);
  return known != nullptr ? known : addFactory(tables, id, error);
}

// Whether the library is loaded, one more load being counted then. Since only a count of 0 leads to
// a load or an unload, this needs no lock: with one, a class that is there would wait for as long
// as another's library takes to load. A count at its top stays there: counted on, it would be 0 while
// the library is in use.
bool countIfLoaded(FactoryDll& record) {
  std::uint32_t count = record.loadCount.load(std::memory_order_acquire);
  while (count != 0 && count != kPinned &&
         !record.loadCount.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel,
                                                 std::memory_order_acquire)) {
  }
  return count != 0;
}

// Whether this undoes the last load.
bool countLastUnload(FactoryDll& record) {
  std::uint32_t count = record.loadCount.load(std::memory_order_relaxed);
  while (count != 0 && count != kPinned &&
         !record.loadCount.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel,
                                                 std::memory_order_relaxed)) {
  }
  return count == 1;
}

// False when the library does not load. Requires: the load lock.
bool loadModule(DllLoaderTables& tables, FactoryDll& record) {
  if (record.module == nullptr) {
    record.loadFailure.clear();
    record.module =
        LTLib::detail::loadModule(tables.failedModules, record.dllPath.c_str(), record.loadFailure);
  }
  return record.module != nullptr;
}

}  // namespace

FactoryDll* iqsDllLoader::Load(const iqsID& id, char** error) {
  DllLoaderTables* const tables = dllLoaderTables();
  if (tables == nullptr || id.text() == nullptr) {
    return nullptr;
  }
  FactoryDll* const record = findOrAddFactory(*tables, id.text(), error);
  if (record == nullptr || countIfLoaded(*record)) {
    return record;
  }
  const ScopedLock hold(tables->loadLock);
  if (!loadModule(*tables, *record)) {
    reportNoLoad(*record, error);
    return nullptr;
  }
  // Another thread may have loaded it between the look at the count and the lock.
  if (!countIfLoaded(*record)) {
    record->loadCount.store(1, std::memory_order_release);
  }
  return record;
}

void iqsDllLoader::Unload(FactoryDll* factory) {
  DllLoaderTables* const tables = dllLoaderTables();
  if (tables == nullptr || factory == nullptr) {
    return;
  }
  const ScopedLock hold(tables->loadLock);
  void* const module = factory->module;
  if (module != nullptr && countLastUnload(*factory)) {
    LTLib::Platform::unloadSharedLibrary(module);
    // A library that registered nothing for the class has no registrar that cleared this.
    factory->module = nullptr;
  }
}

void* iqsDllLoader::CreateInstance(FactoryDll* factory) {
  DllLoaderTables* const tables = dllLoaderTables();
  if (tables == nullptr || factory == nullptr) {
    return nullptr;
  }
  // Both, and in this order: the factory may load a class, and that library's registrars want the
  // factory lock.
  const ScopedLock holdLoads(tables->loadLock);
  const ScopedLock hold(tables->factoryLock);
  const CreatePlain create = factory->createPlain;
  return create != nullptr ? create() : nullptr;
}

void iqsDllLoader::ReleaseInstance(FactoryDll* factory, void* instance) {
  DllLoaderTables* const tables = dllLoaderTables();
  if (tables == nullptr || factory == nullptr || instance == nullptr) {
    return;
  }
  const ScopedLock holdLoads(tables->loadLock);
  const ScopedLock hold(tables->factoryLock);
  const ReleasePlain release = factory->release;
  if (release != nullptr) {
    release(instance);
  }
}

iqsDllLoader::CreateUnknown iqsDllLoader::iqsGetCreateInstance(const iqsID& id, char** error) {
  const FactoryDll* const record = Load(id, error);
  return record != nullptr ? record->createUnknown.load() : nullptr;
}

iqsDllLoader::Registrar::Registrar(const iqsID& id, CreateUnknown create) {
  Register(id, create, nullptr, nullptr);
}

iqsDllLoader::Registrar::Registrar(const iqsID& id, CreatePlain create, ReleasePlain release) {
  Register(id, nullptr, create, release);
}

// An exception out of a static object would end the process.
void iqsDllLoader::Registrar::Register(const iqsID& id, CreateUnknown createUnknown,
                                       CreatePlain createPlain, ReleasePlain release) {
  DllLoaderTables* const tables = dllLoaderTables();
  const bool hasFactory = createUnknown != nullptr || createPlain != nullptr;
  if (!hasFactory || id.text() == nullptr || tables == nullptr) {
    return;
  }
  try {
    FactoryDll* const record = findOrAddFactory(*tables, id.text(), nullptr);
    if (record != nullptr) {
      const ScopedLock hold(tables->factoryLock);
      m_factory = record;
      record->createUnknown = createUnknown;
      record->createPlain = createPlain;
      record->release = release;
    }
  } catch (...) {
    return;
  }
}

iqsDllLoader::Registrar::~Registrar() {
  DllLoaderTables* const tables = dllLoaderTables();
  if (tables == nullptr) {
    return;
  }
  // Not the load lock: where the system unloads a library by itself, as at the end of the process,
  // this thread may hold the system's own lock of loads, for which the holder of ours may wait.
  const ScopedLock hold(tables->factoryLock);
  if (FactoryDll* const record = std::exchange(m_factory, nullptr); record != nullptr) {
    record->loadCount = 0;
    record->module = nullptr;
    record->createUnknown = nullptr;
    record->createPlain = nullptr;
    record->release = nullptr;
  }
}
