// The lock of the trees: many readers side by side, or one thread that changes something.
//
// A thread that writes holds the process's mutex of the trees for as long, which forks know, and
// closes the way for readers. A reader that finds it closed takes that mutex itself and waits its
// turn behind the writer. While it is open readers meet nowhere: each counts itself in and out at one
// of several counters, chosen by its thread, since one that all of them changed would cost them
// more than what they read.
//
// | state            | read                        | write                         |
// |------------------|-----------------------------|-------------------------------|
// | free or reading  | counts in at its counter    | closes, waits for the counters |
// | writer waits     | waits for its turn, alone   | waits for its turn            |
// | writing          | waits for its turn, alone   | waits for its turn            |
//
// No reader passes a writer that waits, and a reader holds up a writer only for the moment that it
// looks at the tree. A thread that writes may write or read again; one that reads may do neither.
#ifndef LTLIB_FILEREGISTRY_TREE_TREE_LOCK_H
#define LTLIB_FILEREGISTRY_TREE_TREE_LOCK_H

#include <atomic>

#include "ltlib/foundation/mutex.h"

namespace LTLib::detail {

/// The mutex that writers hold.
[[nodiscard]] Mutex& treeLock();

/// Keeps all others out while it lives.
class TreeWriting {
 public:
  TreeWriting();
  ~TreeWriting();
  TreeWriting(const TreeWriting&) = delete;
  TreeWriting& operator=(const TreeWriting&) = delete;

 private:
  ScopedLock m_turn;
};

/// Keeps those out who change something, from construction to `end` or destruction. Nothing may wait
/// for anything while it lives.
class TreeReading {
 public:
  TreeReading() { begin(); }
  ~TreeReading() { end(); }
  TreeReading(const TreeReading&) = delete;
  TreeReading& operator=(const TreeReading&) = delete;

  void begin();
  void end();

 private:
  std::atomic<unsigned int>* m_counter = nullptr;  // null for a reader that holds the mutex
  bool m_reads = false;
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_TREE_LOCK_H
