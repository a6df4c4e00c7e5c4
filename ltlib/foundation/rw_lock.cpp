#include "ltlib/foundation/rw_lock.h"

#include <utility>

#include "ltlib/foundation/rw_lock_impl.h"

namespace LTLib {

using Platform::EventReset;

RWLockImpl::RWLockImpl(EventMaker makeEvent)
    : m_readEvent(RWLockImpl::makeEvent(makeEvent, EventReset::kManual)),
      m_writeEvent(RWLockImpl::makeEvent(makeEvent, EventReset::kAutomatic)) {}

RWLockImpl::EventHandle RWLockImpl::makeEvent(EventMaker maker, EventReset reset) {
  EventHandle event(maker(reset));
  if (event == nullptr) {
    throw QSException(kFailure, "cannot create LTLib::RWLock");
  }
  return event;
}

// Who is let in at once need not look at an event: the events are for those that wait.
void RWLockImpl::readLock() {
  {
    const ScopedLock hold(m_lock);
    ++m_readers;
    if (m_state != State::kWriting) {
      m_state = State::kReading;
      return;
    }
  }
  Platform::waitForEvent(*m_readEvent);
}

void RWLockImpl::writeLock() {
  {
    const ScopedLock hold(m_lock);
    ++m_writers;
    if (m_state == State::kFree) {
      m_state = State::kWriting;
      return;
    }
  }
  Platform::waitForEvent(*m_writeEvent);
}

void RWLockImpl::unlock() {
  const ScopedLock hold(m_lock);
  if (m_state == State::kReading) {
    if (--m_readers != 0) {
      return;
    }
    Platform::resetEvent(*m_readEvent);
  } else if (m_state == State::kWriting) {
    --m_writers;
  }
  admit();
}

// Looks at the readers first, so that a waiting reader always beats a waiting writer.
void RWLockImpl::admit() {
  if (m_readers != 0) {
    m_state = State::kReading;
    Platform::setEvent(*m_readEvent);
  } else if (m_writers != 0) {
    m_state = State::kWriting;
    Platform::setEvent(*m_writeEvent);
  } else {
    m_state = State::kFree;
  }
}

RWLockImpl::Counts RWLockImpl::counts() {
  const ScopedLock hold(m_lock);
  return {m_readers, m_writers, m_state};
}

RWLock::RWLock() : m_impl(new RWLockImpl) {}

RWLock::~RWLock() {
  delete std::exchange(m_impl, nullptr);
}

void RWLock::readLock() {
  m_impl->readLock();
}

void RWLock::writeLock() {
  m_impl->writeLock();
}

void RWLock::unlock() {
  m_impl->unlock();
}

ScopedRWLock::ScopedRWLock(RWLock& lock, bool write) : m_lock(lock) {
  write ? m_lock.writeLock() : m_lock.readLock();
}

ScopedRWLock::~ScopedRWLock() {
  m_lock.unlock();
}

ScopedReadRWLock::ScopedReadRWLock(RWLock& lock) : m_lock(lock) {
  m_lock.readLock();
}

ScopedReadRWLock::~ScopedReadRWLock() {
  m_lock.unlock();
}

ScopedWriteRWLock::ScopedWriteRWLock(RWLock& lock) : m_lock(lock) {
  m_lock.writeLock();
}

ScopedWriteRWLock::~ScopedWriteRWLock() {
  m_lock.unlock();
}

}  // namespace LTLib
