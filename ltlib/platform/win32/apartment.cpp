#include "ltlib/platform/apartment.h"

#include <windows.h>

#include <objbase.h>

namespace LTLib::Platform {
namespace {

ApartmentEntry enter(DWORD kind) noexcept {
  switch (CoInitializeEx(nullptr, kind)) {
    case S_OK:
      return ApartmentEntry::kEntered;
    case S_FALSE:
      return ApartmentEntry::kAlreadyInside;
    default:
      return ApartmentEntry::kRefused;
  }
}

}  // namespace

ApartmentEntry enterMultiThreadedApartment() noexcept {
  return enter(COINIT_MULTITHREADED);
}

ApartmentEntry enterSingleThreadedApartment() noexcept {
  return enter(COINIT_APARTMENTTHREADED);
}

void leaveApartment() noexcept {
  CoUninitialize();
}

std::uint32_t exchangeErrorMode(std::uint32_t mode) noexcept {
  return SetErrorMode(mode);
}

}  // namespace LTLib::Platform
