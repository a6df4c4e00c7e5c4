#include "ltlib/foundation/mutex.h"

#include <new>
#include <utility>

#include "ltlib/platform/thread_lock.h"

namespace LTLib {
namespace {

constexpr unsigned int kSpinCount = 4000;

}  // namespace

Mutex::Mutex() : m_lock(Platform::createThreadLock(kSpinCount)) {
  if (m_lock == nullptr) {
    throw std::bad_alloc();
  }
}

Mutex::~Mutex() {
  Platform::destroyThreadLock(std::exchange(m_lock, nullptr));
}

void Mutex::lock() {
  if (!Platform::enterThreadLock(*m_lock)) {
    throw QSException(kFailure, "cannot lock LTLib::Mutex");
  }
}

void Mutex::unlock() {
  Platform::leaveThreadLock(*m_lock);
}

}  // namespace LTLib
