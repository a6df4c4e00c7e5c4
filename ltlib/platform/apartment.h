// What a thread tells the system about its use of components, and what the process does about
// critical errors. A system that has neither keeps the books all the same.
#ifndef LTLIB_PLATFORM_APARTMENT_H
#define LTLIB_PLATFORM_APARTMENT_H

#include <cstdint>

namespace LTLib::Platform {

enum class ApartmentEntry {
  kEntered,
  kAlreadyInside,  // counted once more
  kRefused,        // the thread is in an apartment of the other kind, or the system cannot
};

/// Brings the calling thread into the multi-threaded apartment of the process.
[[nodiscard]] ApartmentEntry enterMultiThreadedApartment() noexcept;

/// Brings the calling thread into an apartment of its own.
[[nodiscard]] ApartmentEntry enterSingleThreadedApartment() noexcept;

/// Undoes one entry of the calling thread that was not refused; without one it does nothing.
void leaveApartment() noexcept;

/// Sets the error mode of the process and returns the one before.
std::uint32_t exchangeErrorMode(std::uint32_t mode) noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_APARTMENT_H
