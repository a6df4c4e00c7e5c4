// The loader's state, one for the process.
#ifndef LTLIB_COMPONENT_DLL_LOADER_TABLES_H
#define LTLIB_COMPONENT_DLL_LOADER_TABLES_H

#include <vector>

#include "ltlib/component/factory_dll.h"
#include "ltlib/component/module_load.h"
#include "ltlib/foundation/process_mutex.h"

namespace LTLib::detail {

/// The locks are taken in the order loadLock, factoryLock, tableLock. A thread that creates or
/// releases an object takes loadLock, too: a factory may load a class, and a library that loads may
/// register factories, so that without it two threads could wait for each other.
struct DllLoaderTables {
  FactoryIndex factories;

  // Additions to `factories`; held across the look-up in the registry.
  ProcessMutex tableLock{ProcessLock::kClasses};

  // Modules and their counts; held while a library loads or goes.
  ProcessMutex loadLock{ProcessLock::kLoads};

  // Factories and release functions; held while one runs.
  ProcessMutex factoryLock{ProcessLock::kFactories};

  std::vector<FailedModule> failedModules;  // load lock
};

/// Null when they could not be made. Never freed: the registrars of a library that goes at the end
/// of the process still need them.
[[nodiscard]] DllLoaderTables* dllLoaderTables();

}  // namespace LTLib::detail

#endif  // LTLIB_COMPONENT_DLL_LOADER_TABLES_H
