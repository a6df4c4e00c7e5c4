#include "ltlib/foundation/mutex.h"

#include <new>
#include <utility>

#include "ltlib/platform/thread_lock.h"

namespace LTLib {
namespace {

// Making an exception takes registers that have to be saved first. Inlined into lock, this would
// have each call save them, whereas nearly none comes here.
[[noreturn, gnu::noinline]] void reportRefusal() {
  throw QSException(kFailure, "cannot lock LTLib::Mutex");
}

}  // namespace

Mutex::Mutex() : m_lock(Platform::createThreadLock(Platform::kSpinCount)) {
  if (m_lock == nullptr) {
    throw std::bad_alloc();
  }
}

Mutex::~Mutex() {
  Platform::destroyThreadLock(std::exchange(m_lock, nullptr));
}

void Mutex::lock() {
  if (!Platform::enterThreadLock(*m_lock)) {
    reportRefusal();
  }
}

void Mutex::unlock() {
  Platform::leaveThreadLock(*m_lock);
}

}  // namespace LTLib
