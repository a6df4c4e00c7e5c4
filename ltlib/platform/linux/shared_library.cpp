#include "ltlib/platform/shared_library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace LTLib::Platform {
namespace {

constexpr int kMode = RTLD_NOW | RTLD_LOCAL;

// The thread that holds the loader's lock for good, since an exception that leaves `dlopen` leaves
// it locked. A forked child finds it free.
struct alignas(std::uint64_t) Thread {
  pid_t process = 0;
  pid_t id = 0;
};

constinit std::atomic<Thread> s_holder{};

Thread thisThread() {
  return {::getpid(), ::gettid()};
}

bool isLockedByAnother() {
  const Thread holder = s_holder;
  const Thread self = thisThread();
  return holder.process == self.process && holder.id != self.id;
}

std::string inOneLine(const char* text) {
  std::string line = text != nullptr ? text : "";
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

}  // namespace

void* loadSharedLibrary(const char* path, std::string& reason, std::exception_ptr& thrown) {
  // An empty path would open the program itself.
  if (*path == '\0') {
    reason = "the path is empty";
    return nullptr;
  }
  if (isLockedByAnother()) {
    reason = "the system's loader is locked for all threads but one since an exception left it";
    return nullptr;
  }
  // By its declaration the function throws nothing, which would keep the handler from being made.
  void* (*volatile const open)(const char*, int) = ::dlopen;
  void* module = nullptr;
  try {
    module = open(path, kMode);
  } catch (...) {
    thrown = std::current_exception();
    s_holder = thisThread();
    return ::dlopen(path, kMode | RTLD_NOLOAD);
  }
  if (module == nullptr) {
    reason = inOneLine(::dlerror());
  }
  return module;
}

void unloadSharedLibrary(void* module) noexcept {
  if (!isLockedByAnother()) {
    static_cast<void>(::dlclose(module));
  }
}

}  // namespace LTLib::Platform
