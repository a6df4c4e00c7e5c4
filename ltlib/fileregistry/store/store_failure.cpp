#include "ltlib/fileregistry/store/store_failure.h"

#include <new>

#include "ltlib/foundation/kqsresult.h"

namespace LTLib {
namespace {

// By thread, as errno is: another thread's save must not put its words in between.
std::string& lastText() {
  thread_local std::string text;
  return text;
}

}  // namespace

std::string lastStoreFailure() {
  return lastText();
}

// Called where a failure is handled already, so that a lack of memory must not raise another.
void detail::noteStoreFailure(const std::string& path, const char* event,
                              const char* reason) noexcept {
  std::string& last = lastText();
  try {
    last = "the store " + path + ' ' + event + ": " + reason;
  } catch (const std::bad_alloc&) {
    last.clear();
  }
}

// The exception is not thrown: what is made of one is traced.
void detail::traceStoreFailure(const std::string& text) {
  lastText() = text;
  const QSException traced("kFileRegistry", __LINE__, kFailure, text.c_str());
}

}  // namespace LTLib
