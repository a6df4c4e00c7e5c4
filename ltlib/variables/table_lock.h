// A lock for many readers and few writers in which neither side waits for ever: readers share it,
// and a writer that waits has later readers wait behind it.
//
// A std::shared_mutex does not do in its place. On Linux it lets readers pass a writer that waits,
// 100,000 of them in a row where that was tried, and nothing frees it in the child of a fork from
// readers that do not exist there.
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
    static_cast<void>(Platform::enterThreadLock(m_turn));
    m_writing = true;
    m_table.writeLock();
  }

  // The mark goes while the turn is still held: whoever comes next sets it again.
  void unlock() {
    m_table.unlock();
    m_writing = false;
    Platform::leaveThreadLock(m_turn);
  }

  // The lock below lets readers in ahead of a waiting writer without end.
  void lock_shared() {
    if (hasWriter()) {
      const Platform::ThreadLockScope behindTheWriter(m_turn);
    }
    m_table.readLock();
  }

  void unlock_shared() { m_table.unlock(); }

  /// Whether a writer has its turn: it waits for the present readers, or writes.
  bool hasWriter() const { return m_writing.load(); }

  /// In the child of a fork, which has no other readers and writers. Nobody was writing, since a
  /// fork takes the writers' turn.
  void forgetThreads() { m_table.forgetThreads(); }

 private:
  std::atomic<bool> m_writing{false};  // changes under the turn
  Platform::ThreadLock& m_turn = Platform::processLock(Platform::ProcessLock::kVariables);
  RWLockImpl m_table;
};

}  // namespace LTLib::detail

#endif  // LTLIB_VARIABLES_TABLE_LOCK_H
