// Which backend stands behind the one instance of the registry manager.
#ifndef LTLIB_REGISTRY_BACKEND_CHOICE_H
#define LTLIB_REGISTRY_BACKEND_CHOICE_H

#include <memory>

#include "ltlib/registry/registry_manager.h"

namespace LTLib::detail {

/// Looks for the marker file beside the library and makes the backend that it asks for.
[[nodiscard]] std::unique_ptr<QSRegistryManagerImpl> chooseBackend();

/// Puts a manager in the place of the instance and gives back the one that served so far. For
/// tests of what no real backend answers; nobody else may use the instance meanwhile.
std::unique_ptr<QSRegistryManagerImpl> replaceInstance(
    std::unique_ptr<QSRegistryManagerImpl> instance);

}  // namespace LTLib::detail

#endif  // LTLIB_REGISTRY_BACKEND_CHOICE_H
