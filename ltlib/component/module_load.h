// Modules as the loader gets and gives them: a library whose static objects threw is a failed one.
#ifndef LTLIB_COMPONENT_MODULE_LOAD_H
#define LTLIB_COMPONENT_MODULE_LOAD_H

#include <string>
#include <vector>

namespace LTLib::detail {

/// A module that came into memory and failed. It stays, since what it threw may have its code there;
/// the system takes it for loaded and would not construct its static objects again.
struct FailedModule {
  void* module;
  std::string reason;
};

/// Loads a library on this thread, or counts one more load. Throws what a static object of it threw,
/// and is null from then on; null, too, if the system does not load it. `reason` then tells why.
/// Requires: the load lock, which guards `failed`.
[[nodiscard]] void* loadModule(std::vector<FailedModule>& failed, const char* path,
                               std::string& reason);

}  // namespace LTLib::detail

#endif  // LTLIB_COMPONENT_MODULE_LOAD_H
