// A lock for many readers and few writers in which neither side waits for ever: readers share it,
// and a writer that waits has later readers wait behind it.
//
// Threads: as a std::shared_mutex, and with the guards of the standard library. No thread may take
// it again while it holds it.
//
// | state            | lock_shared            | lock                          |
// |------------------|------------------------|-------------------------------|
// | free             | reading                | writing                       |
// | reading          | reading                | waits for the present readers |
// | a writer waits   | waits for the writer   | waits for its turn            |
// | writing          | waits for the writer   | waits for its turn            |
#ifndef LTLIB_VARIABLES_TABLE_LOCK_H
#define LTLIB_VARIABLES_TABLE_LOCK_H

#include <atomic>

#include "ltlib/foundation/rw_lock_impl.h"
#include "ltlib/platform/fork.h"

namespace LTLib::detail {

class TableLock {
 public:
  void lock() {
    m_writers.fetch_add(1);
    static_cast<void>(Platform::enterThreadLock(m_turn));
    m_table.writeLock();
  }

  void unlock() {
    m_table.unlock();
    Platform::leaveThreadLock(m_turn);
    m_writers.fetch_sub(1);
  }

  // The lock below lets readers in ahead of a waiting writer without end.
  void lock_shared() {
    if (writersWait()) {
      const Platform::ThreadLockScope behindTheWriter(m_turn);
    }
    m_table.readLock();
  }

  void unlock_shared() { m_table.unlock(); }

  /// Whether a writer waits or writes.
  bool writersWait() const { return m_writers.load() != 0; }

  /// In the child of a fork, which has no other readers and writers. Nobody was writing, since a
  /// fork takes the writers' turn.
  void forgetThreads() {
    m_writers = 0;
    m_table.forgetThreads();
  }

 private:
  std::atomic<int> m_writers{0};  // those that write or wait
  Platform::ThreadLock& m_turn = Platform::processLock(Platform::ProcessLock::kVariables);
  RWLockImpl m_table;
};

}  // namespace LTLib::detail

#endif  // LTLIB_VARIABLES_TABLE_LOCK_H
