/// \file
/// \brief One-time initialisation: many threads meet at a record, one of them runs the initialiser,
/// and none goes on before it has ended.
///
/// Threads: any thread at any time. A caller sees all that the initialiser wrote. An initialiser
/// must not call ltDoOnce on its own record: it would wait for itself.
///
/// Forks: a record that another thread was running is untouched in the child, where the initialiser
/// runs again, from its start, for whoever asks next. So it must bear being cut off anywhere.
///
/// Ownership: a record lives in static storage, is ready before any code has run, guards one
/// initialiser and is never disposed of.
///
/// | record    | done | entered   | a caller                                                |
/// |-----------|------|-----------|---------------------------------------------------------|
/// | untouched | 0    | -1        | runs the initialiser; the record is running             |
/// | running   | 0    | 0 or more | waits, looking once a millisecond                       |
/// | finished  | 1    | 0 or more | goes on                                                 |
///
/// An initialiser that returns takes the record from running to finished, for good. One that throws
/// takes it back to untouched: its caller gets the exception, and a waiter or the next caller runs
/// the initialiser again. So no initialiser completes twice.
#ifndef LTLIB_FOUNDATION_DO_ONCE_H
#define LTLIB_FOUNDATION_DO_ONCE_H

#include <atomic>
#include <cstdint>

#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"

/// The state of one initialisation: `static constinit ltDoOnce_t s_once;`
struct ltDoOnce_t {
  std::atomic<std::uint8_t> done{0};
  std::atomic<std::int32_t> entered{-1};
};

inline QSResult ltDoOnce(volatile ltDoOnce_t& once, void (*init)());

/// What stands behind the inline front.
class LTLIB_EXPORT ltDoOnceInternal {
  friend QSResult ltDoOnce(volatile ltDoOnce_t& once, void (*init)());

  static QSResult ltDoOnceImpl(volatile ltDoOnce_t& once, void (*init)());
};

/// Makes sure that `init` has completed once for this record: 0x00041000 when it has, whoever ran
/// it. A null `init` on a record that is not finished gives 0x8004102E and leaves it alone. Throws
/// what `init` throws, to the caller that ran it. After that the cost is one byte test.
inline QSResult ltDoOnce(volatile ltDoOnce_t& once, void (*init)()) {
  // Told to the compiler, which else lets every caller jump around the call.
  if (once.done.load(std::memory_order_acquire) == 0) [[unlikely]] {
    return ltDoOnceInternal::ltDoOnceImpl(once, init);
  }
  return LTLib::kInitialised;
}

#endif  // LTLIB_FOUNDATION_DO_ONCE_H
