// The state behind a reader-writer lock: one word, which changes in one step, and two events for
// those that have to wait.
#ifndef LTLIB_FOUNDATION_RW_LOCK_IMPL_H
#define LTLIB_FOUNDATION_RW_LOCK_IMPL_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "ltlib/platform/event.h"

namespace LTLib {

class RWLockImpl {
 public:
  enum class State : std::uint32_t { kFree, kReading, kWriting };
  using EventMaker = Platform::Event* (*)(Platform::EventReset reset) noexcept;

  struct Counts {
    std::uint32_t readers = 0;  // that hold the lock or wait for it
    std::uint32_t writers = 0;  // that hold the lock or wait for it
    State state = State::kFree;
    bool operator==(const Counts&) const = default;
  };

  explicit RWLockImpl(EventMaker maker = Platform::createEvent);

  void readLock();
  void writeLock();
  void unlock();

  Counts counts() const;

  /// Makes the lock free, whoever holds it or waits for it. Requires: the process has one thread,
  /// as the child of a fork has.
  void forgetThreads();

 private:
  struct EventEnd {
    void operator()(Platform::Event* event) const { Platform::destroyEvent(event); }
  };
  using EventHandle = std::unique_ptr<Platform::Event, EventEnd>;

  // Whether somebody writes, whether the read event is open, the readers and the writers, from the
  // low bits on.
  using Word = std::uint64_t;

  static EventHandle makeEvent(EventMaker maker, Platform::EventReset reset);
  void unlockAmongOthers(Word now);
  Word afterUnlock(Word now);

  EventHandle m_readEvent;
  EventHandle m_writeEvent;
  std::atomic<Word> m_word{0};
};

}  // namespace LTLib

#endif  // LTLIB_FOUNDATION_RW_LOCK_IMPL_H
