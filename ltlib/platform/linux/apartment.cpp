// There are no apartments here. The books are kept all the same, so that a thread that mixes the two
// kinds fails here as it does where there are some.
#include "ltlib/platform/apartment.h"

#include <atomic>

namespace LTLib::Platform {
namespace {

enum class Kind { kMultiThreaded, kSingleThreaded };

thread_local Kind t_kind = Kind::kMultiThreaded;
thread_local unsigned int t_entries = 0;

constinit std::atomic<std::uint32_t> s_errorMode{0};

ApartmentEntry enter(Kind kind) noexcept {
  if (t_entries != 0 && t_kind != kind) {
    return ApartmentEntry::kRefused;
  }
  t_kind = kind;
  return t_entries++ == 0 ? ApartmentEntry::kEntered : ApartmentEntry::kAlreadyInside;
}

}  // namespace

ApartmentEntry enterMultiThreadedApartment() noexcept {
  return enter(Kind::kMultiThreaded);
}

ApartmentEntry enterSingleThreadedApartment() noexcept {
  return enter(Kind::kSingleThreaded);
}

void leaveApartment() noexcept {
  if (t_entries != 0) {
    --t_entries;
  }
}

std::uint32_t exchangeErrorMode(std::uint32_t mode) noexcept {
  return s_errorMode.exchange(mode);
}

}  // namespace LTLib::Platform
