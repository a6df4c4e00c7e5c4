#include "ltlib/component/module_load.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "ltlib/component/component_start.h"
#include "ltlib/platform/shared_library.h"

namespace LTLib {
namespace {

// Where the innermost load of this thread keeps what the library's static objects throw.
constinit thread_local std::exception_ptr* t_thrown = nullptr;

class ThrownScope {
 public:
  explicit ThrownScope(std::exception_ptr& thrown) : m_outer(std::exchange(t_thrown, &thrown)) {}
  ~ThrownScope() { t_thrown = m_outer; }
  ThrownScope(const ThrownScope&) = delete;
  ThrownScope& operator=(const ThrownScope&) = delete;

 private:
  std::exception_ptr* m_outer;
};

std::string describe(const std::exception_ptr& thrown) {
  const std::string what = "an exception left its static objects: ";
  try {
    std::rethrow_exception(thrown);
  } catch (const std::exception& exception) {
    return what + exception.what();
  } catch (...) {
    return what + "no std::exception";
  }
}

// Most initialisers are declared without arguments and leave those that they get alone, which a
// sanitizer takes for a call through the wrong type.
__attribute__((no_sanitize("undefined"))) void run(const ComponentInitialiser* first,
                                                   const ComponentInitialiser* end, int count,
                                                   char** words, char** environment) {
  for (; first != end; ++first) {
    (*first)(count, words, environment);
  }
}

}  // namespace

void startComponent(const ComponentInitialiser* first, const ComponentInitialiser* end, int count,
                    char** words, char** environment) {
  std::exception_ptr* const thrown = t_thrown;
  try {
    run(first, end, count, words, environment);
  } catch (...) {
    // No load of the loader's: the program itself called the system's, and bears what comes of it.
    if (thrown == nullptr) {
      throw;
    }
    *thrown = std::current_exception();
  }
}

void* detail::loadModule(std::vector<FailedModule>& failed, const char* path, std::string& reason) {
  std::exception_ptr thrown;
  void* module = nullptr;
  {
    const ThrownScope scope(thrown);
    module = Platform::loadSharedLibrary(path, reason, thrown);
  }
  if (thrown != nullptr) {
    reason = describe(thrown);
    failed.push_back({module, reason});
    std::rethrow_exception(thrown);
  }
  const auto known = std::find_if(failed.begin(), failed.end(), [module](const FailedModule& each) {
    return each.module == module;
  });
  if (module == nullptr || known == failed.end()) {
    return module;
  }
  Platform::unloadSharedLibrary(module);
  // The system counted this load, too; the library stays by the first one.
  reason = known->reason;
  return nullptr;
}

}  // namespace LTLib
