#include "ltlib/foundation/rw_lock.h"

#include <utility>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/foundation/rw_lock_impl.h"

namespace LTLib {

using Platform::EventReset;

namespace {

using State = RWLockImpl::State;

// 30 bits for the readers and 31 for the writers: more threads than a process can have.
constexpr std::uint64_t kWriting = 1;
constexpr std::uint64_t kReadEventOpen = 2;  // since readers were let in that had waited
constexpr std::uint64_t kOneReader = 4;
constexpr std::uint64_t kOneWriter = std::uint64_t{1} << 32;
// One holder, and nobody that waits.
constexpr std::uint64_t kSoleReader = kOneReader;
constexpr std::uint64_t kSoleWriter = kOneWriter | kWriting;

std::uint32_t readersOf(std::uint64_t word) {
  return static_cast<std::uint32_t>(word % kOneWriter / kOneReader);
}

std::uint32_t writersOf(std::uint64_t word) {
  return static_cast<std::uint32_t>(word / kOneWriter);
}

// While nobody writes, readers hold the lock as soon as they count.
State stateOf(std::uint64_t word) {
  if ((word & kWriting) != 0) {
    return State::kWriting;
  }
  return readersOf(word) != 0 ? State::kReading : State::kFree;
}

// Looks at the readers first, so that a waiting reader always beats a waiting writer.
std::uint64_t admitted(std::uint64_t word) {
  if (readersOf(word) != 0) {
    return word | kReadEventOpen;
  }
  return writersOf(word) != 0 ? word | kWriting : word;
}

}  // namespace

RWLockImpl::RWLockImpl(EventMaker maker)
    : m_readEvent(makeEvent(maker, EventReset::kManual)),
      m_writeEvent(makeEvent(maker, EventReset::kAutomatic)) {}

RWLockImpl::EventHandle RWLockImpl::makeEvent(EventMaker maker, EventReset reset) {
  EventHandle event(maker(reset));
  if (event == nullptr) {
    throw QSException(kFailure, "cannot create LTLib::RWLock");
  }
  return event;
}

// Who is let in at once need not look at an event: the events are for those that wait.
void RWLockImpl::readLock() {
  if ((m_word.fetch_add(kOneReader, std::memory_order_acq_rel) & kWriting) != 0) {
    Platform::waitForEvent(*m_readEvent);
  }
}

// The first try takes the lock for free, which saves a look at it.
void RWLockImpl::writeLock() {
  Word now = 0;
  Word next = kSoleWriter;
  while (!m_word.compare_exchange_weak(now, next, std::memory_order_acq_rel,
                                       std::memory_order_relaxed)) {
    next = now + kOneWriter;
    if (stateOf(now) == State::kFree) {
      next |= kWriting;
    }
  }
  if (stateOf(now) != State::kFree) {
    Platform::waitForEvent(*m_writeEvent);
  }
}

// The word of a sole holder says all, so that nothing has to be worked out for it.
void RWLockImpl::unlock() {
  Word now = m_word.load(std::memory_order_relaxed);
  if ((now == kSoleReader || now == kSoleWriter) &&
      m_word.compare_exchange_strong(now, 0, std::memory_order_acq_rel,
                                     std::memory_order_relaxed)) {
    return;
  }
  unlockAmongOthers(now);
}

// The events are opened after the word has changed, which alone decides who is in. Who is let in
// may unlock and delete the lock at once; setEvent bears that.
void RWLockImpl::unlockAmongOthers(Word now) {
  Word next = 0;
  do {
    next = afterUnlock(now);
  } while (!m_word.compare_exchange_weak(now, next, std::memory_order_acq_rel,
                                         std::memory_order_relaxed));
  if (stateOf(next) == State::kWriting) {
    Platform::setEvent(*m_writeEvent);
  } else if (stateOf(next) == State::kReading && stateOf(now) == State::kWriting) {
    Platform::setEvent(*m_readEvent);
  }
}

// The last reader closes the event while it still counts: everybody that waited is through by
// then, and nobody opens the event again before this reader has left.
RWLockImpl::Word RWLockImpl::afterUnlock(Word now) {
  switch (stateOf(now)) {
    case State::kReading:
      now -= kOneReader;
      if (readersOf(now) != 0) {
        return now;
      }
      if ((now & kReadEventOpen) != 0) {
        Platform::resetEvent(*m_readEvent);
        now &= ~kReadEventOpen;
      }
      return admitted(now);
    case State::kWriting:
      return admitted(now - kSoleWriter);
    // An unlock of a free lock does nothing, by contract.
    default:
      return now;
  }
}

// For tests, which wait by it until threads stand where they should.
RWLockImpl::Counts RWLockImpl::counts() const {
  const Word now = m_word.load();
  return {readersOf(now), writersOf(now), stateOf(now)};
}

void RWLockImpl::forgetThreads() {
  Platform::resetEvent(*m_readEvent);
  Platform::resetEvent(*m_writeEvent);
  m_word.store(0);
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
