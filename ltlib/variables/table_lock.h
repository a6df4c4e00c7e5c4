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
#include <mutex>
#include <shared_mutex>

namespace LTLib::detail {

class TableLock {
 public:
  void lock() {
    m_writers.fetch_add(1);
    m_turn.lock();
    m_table.lock();
  }

  void unlock() {
    m_table.unlock();
    m_turn.unlock();
    m_writers.fetch_sub(1);
  }

  // The standard lock may let readers in ahead of a waiting writer without end.
  void lock_shared() {
    if (writersWait()) {
      const std::lock_guard<std::mutex> behindTheWriter(m_turn);
    }
    m_table.lock_shared();
  }

  void unlock_shared() { m_table.unlock_shared(); }

  /// Whether a writer waits or writes.
  bool writersWait() const { return m_writers.load() != 0; }

 private:
  std::atomic<int> m_writers{0};  // those that write or wait
  std::mutex m_turn;
  std::shared_mutex m_table;
};

}  // namespace LTLib::detail

#endif  // LTLIB_VARIABLES_TABLE_LOCK_H
