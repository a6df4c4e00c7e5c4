// The library's own process-wide mutexes, which forks know.
#ifndef LTLIB_FOUNDATION_PROCESS_MUTEX_H
#define LTLIB_FOUNDATION_PROCESS_MUTEX_H

#include "ltlib/foundation/mutex.h"
#include "ltlib/platform/fork.h"

namespace LTLib::detail {

using Platform::ProcessLock;

/// One of the locks of the process, as a Mutex: all objects of one lock are one mutex, which is
/// there before the first of them and after the last.
class ProcessMutex : public Mutex {
 public:
  explicit ProcessMutex(ProcessLock which) noexcept : Mutex(&Platform::processLock(which)) {}
  ~ProcessMutex() { m_lock = nullptr; }
};

}  // namespace LTLib::detail

#endif  // LTLIB_FOUNDATION_PROCESS_MUTEX_H
