// The state behind a reader-writer lock.
#ifndef LTLIB_FOUNDATION_RW_LOCK_IMPL_H
#define LTLIB_FOUNDATION_RW_LOCK_IMPL_H

#include <cstdint>
#include <memory>

#include "ltlib/foundation/mutex.h"
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

  explicit RWLockImpl(EventMaker makeEvent = Platform::createEvent);

  void readLock();
  void writeLock();
  void unlock();

  Counts counts();

 private:
  struct EventEnd {
    void operator()(Platform::Event* event) const { Platform::destroyEvent(event); }
  };
  using EventHandle = std::unique_ptr<Platform::Event, EventEnd>;

  static EventHandle makeEvent(EventMaker maker, Platform::EventReset reset);
  void admit();

  Mutex m_lock;  // guards what follows, and is never held during a wait
  EventHandle m_readEvent;
  EventHandle m_writeEvent;
  std::uint32_t m_readers = 0;
  std::uint32_t m_writers = 0;
  State m_state = State::kFree;
};

}  // namespace LTLib

#endif  // LTLIB_FOUNDATION_RW_LOCK_IMPL_H
