/// \file
/// \brief Entering and leaving the multi-threaded apartment, and silencing the system's
/// critical-error messages.
///
/// Where the system knows neither, the library keeps the books itself.
///
/// Threads: an apartment counts per thread. The error mode is that of the whole process: a guard on
/// one thread silences the others too, and guards that overlap on different threads can leave the
/// mode at either value.
#ifndef LTLIB_FOUNDATION_PROCESS_HELPERS_H
#define LTLIB_FOUNDATION_PROCESS_HELPERS_H

#include <cstdint>

#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"

/// Brings the calling thread into the multi-threaded apartment: 0 when it is inside now, once more
/// if it was before, and 0x80004005 when it is in an apartment of its own or the system refuses.
LTLIB_EXPORT QSResult ltInitComForMT();

/// Undoes one ltInitComForMT of the calling thread that gave 0.
LTLIB_EXPORT void ltUninitComForMT();

/// Sets the process's error mode from construction to destruction. Guards that nest restore in
/// reverse order.
class LTLIB_EXPORT ltRedirectCriticalErrorMessage {
 public:
  /// No message on a critical error, nor on a file that is not found.
  static constexpr std::uint32_t kQuiet = 0x8001;

  explicit ltRedirectCriticalErrorMessage(unsigned int mode = kQuiet);

  /// Sets the mode that held before construction.
  ~ltRedirectCriticalErrorMessage();

  ltRedirectCriticalErrorMessage(const ltRedirectCriticalErrorMessage&) = delete;

  /// Takes over which mode to restore; changes no mode now.
  ltRedirectCriticalErrorMessage& operator=(const ltRedirectCriticalErrorMessage& other);

 private:
  std::uint32_t m_previousMode;
};

#endif  // LTLIB_FOUNDATION_PROCESS_HELPERS_H
