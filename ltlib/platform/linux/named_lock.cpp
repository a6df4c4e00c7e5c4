#include "ltlib/platform/named_lock.h"

#include <pthread.h>

#include <cerrno>
#include <cstddef>
#include <map>
#include <new>
#include <utility>

#include "ltlib/platform/fork.h"
#include "ltlib/platform/linux/fork_window.h"
#include "ltlib/platform/linux/linux_thread_lock.h"
#include "ltlib/platform/linux/lock_file.h"

namespace LTLib::Platform {

// One for each name in a process, however many accesses are open. The thread lock decides within
// the process, so that one thread at most waits for the file's lock, and its holder alone uses the
// fields below it. Descriptors change under the table's guard only, see forgetInChild.
struct NamedLock {
  std::size_t accesses = 0;
  ThreadLock threads{0};
  LockFile file;
  std::size_t depth = 0;
  NamedLock* nextHeld = nullptr;
};

namespace {

using Table = std::map<std::string, NamedLock*>;

// As often a file may be replaced while this process waits for it.
constexpr int kAttempts = 100;

constinit Table* s_table = nullptr;  // never destroyed: late destructors may still use locks
constinit bool s_armed = false;

// Holds the head of the list of locks that a thread holds; its destructor tells of a thread's end,
// later than that of any thread_local object.
pthread_key_t s_held;

ThreadLock& tableGuard() noexcept {
  return processLock(ProcessLock::kNamedLocks);
}

bool isHeld(const NamedLock& lock) noexcept {
  return lock.threads.owner.load(std::memory_order_relaxed) != nullptr;
}

void disposeIfUnused(NamedLock* lock) noexcept {
  if (lock->accesses == 0 && !isHeld(*lock)) {
    s_table->erase(lock->file.path);
    closeLockFile(lock->file);
    delete lock;
  }
}

void giveUp(NamedLock& lock, LockFileEnd end) noexcept {
  lock.depth = 0;
  lock.nextHeld = nullptr;
  giveUpLockFile(lock.file, end);
  leaveThreadLock(lock.threads);
}

// At the end of a thread. The marks stay, and so tell the next owners.
void abandonAll(void* head) noexcept {
  const ThreadLockScope guard(tableGuard());
  for (auto* lock = static_cast<NamedLock*>(head); lock != nullptr;) {
    NamedLock* next = lock->nextHeld;
    giveUp(*lock, LockFileEnd::kAbandoned);
    disposeIfUnused(lock);
    lock = next;
  }
}

// A forked child owns none of its parent's locks. Its copies of the descriptors must go: they
// would keep a lock after its owner's death.
void forgetInChild() noexcept {
  if (!s_armed) {
    return;
  }
  for (auto& [path, lock] : *s_table) {
    closeLockFile(lock->file);
    resetThreadLock(lock->threads);
    lock->depth = 0;
    lock->nextHeld = nullptr;
  }
  pthread_setspecific(s_held, nullptr);
}

const ForkedChildHook s_childHook(forgetInChild);

// Throws std::bad_alloc. Requires: the guard is held, as in all that follows but the waits.
bool arm() {
  if (s_armed) {
    return true;
  }
  if (s_table == nullptr) {
    s_table = new Table;
  }
  s_armed = handleForks() && pthread_key_create(&s_held, abandonAll) == 0;
  return s_armed;
}

NamedLock* makeLock(std::string path, std::string& reason) {
  auto* lock = new NamedLock;
  lock->file.path = std::move(path);
  try {
    const int error = openLockFile(lock->file);
    if (error == 0) {
      s_table->emplace(lock->file.path, lock);
      return lock;
    }
    reason = describeObstacle(lock->file, error);
  } catch (...) {
    closeLockFile(lock->file);
    delete lock;
    throw;
  }
  delete lock;
  return nullptr;
}

NamedLock* findOrMakeLock(const std::string& name, std::string& reason) {
  std::string path = lockFilePath(name);
  const auto found = s_table->find(path);
  NamedLock* lock = found != s_table->end() ? found->second : makeLock(std::move(path), reason);
  if (lock != nullptr) {
    ++lock->accesses;
  }
  return lock;
}

NamedLockWait failed(int error) noexcept {
  return {NamedLockStatus::kFailed, static_cast<unsigned long>(error)};
}

// A child of a fork opens the file anew, and so does one whose file was removed by a cleaner or
// closed by somebody else. To look at the file its user needs no guard.
int reopenFile(LockFile& file, bool replaced) noexcept {
  if (!replaced && isOpenLockFile(file)) {
    return 0;
  }
  const ThreadLockScope guard(tableGuard());
  if (replaced) {
    closeLockFile(file);
  }
  return openLockFile(file);
}

NamedLockWait takeFile(LockFile& file) noexcept {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    int error = reopenFile(file, attempt > 0);
    if (error == 0) {
      error = waitForLockFile(file);
    }
    // Somebody has closed the number between the look at it and the wait.
    if (error == EBADF) {
      continue;
    }
    if (error != 0) {
      return failed(error);
    }
    switch (markLockFile(file)) {
      case LockFileState::kFree:
        return {NamedLockStatus::kObtained, 0};
      case LockFileState::kAbandoned:
        return {NamedLockStatus::kAbandoned, 0};
      case LockFileState::kFailed:
        error = errno;
        giveUpLockFile(file, LockFileEnd::kAbandoned);
        return failed(error);
      case LockFileState::kReplaced:
        break;
    }
  }
  return failed(ESTALE);
}

// Who holds it may be waiting for another process.
void enterThreads(ThreadLock& threads) noexcept {
  if (!tryEnterThreadLock(threads)) {
    const ForkWindow window;
    static_cast<void>(enterThreadLock(threads));
  }
}

bool addToHeld(NamedLock& lock) noexcept {
  lock.nextHeld = static_cast<NamedLock*>(pthread_getspecific(s_held));
  return pthread_setspecific(s_held, &lock) == 0;
}

void removeFromHeld(NamedLock& lock) noexcept {
  auto* head = static_cast<NamedLock*>(pthread_getspecific(s_held));
  // The last one taken is the first one given back, mostly.
  if (head == &lock) {
    pthread_setspecific(s_held, lock.nextHeld);
    return;
  }
  while (head->nextHeld != &lock) {
    head = head->nextHeld;
  }
  head->nextHeld = lock.nextHeld;
}

}  // namespace

NamedLock* openNamedLock(const std::string& name, std::string& reason) noexcept {
  const ThreadLockScope guard(tableGuard());
  try {
    return arm() ? findOrMakeLock(name, reason) : nullptr;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

NamedLockWait waitForNamedLock(NamedLock& lock) noexcept {
  if (holdsThreadLock(lock.threads)) {
    ++lock.depth;
    return {NamedLockStatus::kObtained, 0};
  }
  // The threads of this process first, then the file: one descriptor serves them all, and the system's
  // lock on it keeps no two threads apart.
  enterThreads(lock.threads);
  const NamedLockWait wait = takeFile(lock.file);
  if (wait.status == NamedLockStatus::kFailed) {
    leaveThreadLock(lock.threads);
    return wait;
  }
  if (!addToHeld(lock)) {
    // The next owner is still to hear of an abandoned lock.
    giveUp(lock, wait.status == NamedLockStatus::kObtained ? LockFileEnd::kReleased
                                                           : LockFileEnd::kAbandoned);
    return failed(ENOMEM);
  }
  lock.depth = 1;
  return wait;
}

void releaseNamedLock(NamedLock& lock) noexcept {
  if (!holdsThreadLock(lock.threads) || --lock.depth > 0) {
    return;
  }
  // Off the list ahead of the release: the next owner puts the lock on a list of its own.
  removeFromHeld(lock);
  giveUp(lock, LockFileEnd::kReleased);
}

void closeNamedLock(NamedLock* lock) noexcept {
  if (lock == nullptr) {
    return;
  }
  const ThreadLockScope guard(tableGuard());
  --lock->accesses;
  disposeIfUnused(lock);
}

}  // namespace LTLib::Platform
