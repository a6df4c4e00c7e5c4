// What a fork of the process means for the library's own state.
//
// The child of a fork has one thread, the one that forked, and a copy of everything as it stood.
// What the other threads held nobody gives back there, and what they were about nobody ends. So a
// fork takes the process locks: in the child what they guard is whole, and they are free but for
// those that the forking thread itself holds.
//
// A fork waits for no other process: a lock whose holder waits for one is left alone, and is free
// in the child, since whoever waits has left whole what it guards. It waits no longer than a second
// for the loader's locks, under which components run their own code; these are free in the child in
// any case. Where there is no fork nothing but the locks themselves is left of all this.
#ifndef LTLIB_PLATFORM_FORK_H
#define LTLIB_PLATFORM_FORK_H

#include "ltlib/platform/thread_lock.h"

namespace LTLib::Platform {

/// The locks under which state of the process stands, in the order in which a thread that needs
/// several takes them. Nobody waits for other processes or calls foreign code under the latter
/// five.
enum class ProcessLock : unsigned int {
  kLoads,          // the loader's modules and their counts
  kFactories,      // the loader's factories
  kClasses,        // the loader's records of classes
  kTree,           // the file registry's trees and roots
  kStores,         // the names of the stores' locks, and the stores against other threads
  kPendingTables,  // variable tables that wait for their manager, and its making
  kVariables,      // changes of the variables
  kSeeds,          // what seeds the threads' identifiers
  kNamedLocks,     // this process's named locks
  kSoleWork,       // the notes of work that one thread does for all
};

/// Ready before any code has run, and to the end of the process.
[[nodiscard]] ThreadLock& processLock(ProcessLock which) noexcept;

/// Notes, while it lives, that this thread does a piece of work for all, such as an initialiser. In
/// the child of a fork by another thread nobody does it: `giveBack` is called there.
class SoleWork {
 public:
  using GiveBack = void (*)(volatile void* work) noexcept;

  SoleWork(volatile void* work, GiveBack giveBack) noexcept : m_work(work), m_giveBack(giveBack) {}
  ~SoleWork();
  SoleWork(const SoleWork&) = delete;
  SoleWork& operator=(const SoleWork&) = delete;

  /// Calls `take`, and if it gives true notes the work. To forks the two are one step.
  template <class Take>
  [[nodiscard]] bool beginIf(Take take) {
    const ThreadLockScope hold(processLock(ProcessLock::kSoleWork));
    const bool taken = take();
    if (taken) {
      begin();
    }
    return taken;
  }

  /// Calls `publish` and drops the note; to forks the two are one step.
  template <class Publish>
  void endWith(Publish publish) {
    const ThreadLockScope hold(processLock(ProcessLock::kSoleWork));
    publish();
    end();
  }

 private:
  friend struct ForkedChild;
  void begin() noexcept;
  void end() noexcept;

  volatile void* const m_work;
  const GiveBack m_giveBack;
  const void* m_thread = nullptr;
  SoleWork* m_next = nullptr;
};

/// Has `forget` called in every child of a fork, on its one thread, with all process locks held:
/// for what locks alone do not put right. For static objects.
class ForkedChildHook {
 public:
  using Forget = void (*)() noexcept;

  explicit ForkedChildHook(Forget forget) noexcept;

 private:
  friend struct ForkedChild;
  const Forget m_forget;
  ForkedChildHook* m_next = nullptr;
};

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_FORK_H
