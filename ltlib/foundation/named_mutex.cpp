#include "ltlib/foundation/named_mutex.h"

#include <utility>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/named_lock.h"

namespace LTLib {
namespace {

using Platform::NamedLockStatus;

[[noreturn]] void fail(const std::string& text) {
  throw QSException(kFailure, text.c_str());
}

}  // namespace

NamedMutexImpl::NamedMutexImpl(const char* name)
    : m_lock(nullptr), m_name(name != nullptr ? name : "") {
  // Without a name there is nothing that others could share.
  std::string reason;
  if (name != nullptr) {
    m_lock = Platform::openNamedLock(m_name, reason);
  }
  if (m_lock == nullptr) {
    fail("cannot create named LTLib::Mutex " + m_name + (reason.empty() ? "" : ": ") + reason);
  }
}

NamedMutexImpl::~NamedMutexImpl() {
  Platform::closeNamedLock(m_lock);
}

void NamedMutexImpl::lock() {
  const Platform::NamedLockWait wait = Platform::waitForNamedLock(*m_lock);
  if (wait.status == NamedLockStatus::kObtained) {
    return;
  }
  const std::string text = "cannot lock LTLib::NamedMutex " + m_name;
  switch (wait.status) {
    // The mutex is this thread's all the same and is not given back, so that the caller can put
    // right what the one before left half done.
    case NamedLockStatus::kAbandoned:
      fail(text + " (abandoned)");
    case NamedLockStatus::kFailed:
      fail(text + ", error: " + std::to_string(wait.systemError));
    default:
      fail(text);
  }
}

void NamedMutexImpl::unlock() {
  Platform::releaseNamedLock(*m_lock);
}

NamedMutex::NamedMutex(const char* name) : m_impl(new NamedMutexImpl(name)) {}

NamedMutex::~NamedMutex() {
  delete std::exchange(m_impl, nullptr);
}

void NamedMutex::lock() {
  m_impl->lock();
}

void NamedMutex::unlock() {
  m_impl->unlock();
}

}  // namespace LTLib
