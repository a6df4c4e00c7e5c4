// There is no registry of the system here, and nothing stands in for one: what is written into a
// registry must not be lost in silence.
#include "ltlib/platform/os_registry.h"

namespace LTLib::Platform {
namespace {

// ERROR_CALL_NOT_IMPLEMENTED of the contract's numbers.
constexpr int kNotImplemented = 120;

}  // namespace

bool hasSystemRegistry() noexcept {
  return false;
}

namespace OsRegistry {

int closeKey(void*) noexcept {
  return kNotImplemented;
}

int openKey(void*, const char*, unsigned int, unsigned int, void**) noexcept {
  return kNotImplemented;
}

int createKey(void*, const char*, void**) noexcept {
  return kNotImplemented;
}

int createKeyEx(void*, const char*, char*, unsigned int, unsigned int, void**,
                unsigned int*) noexcept {
  return kNotImplemented;
}

int deleteKey(void*, const char*) noexcept {
  return kNotImplemented;
}

int queryValue(void*, const char16_t*, unsigned int*, unsigned char*, unsigned int*) noexcept {
  return kNotImplemented;
}

int setValue(void*, const char16_t*, unsigned int, const unsigned char*, unsigned int) noexcept {
  return kNotImplemented;
}

int deleteValue(void*, const char*) noexcept {
  return kNotImplemented;
}

int enumKeyEx(void*, unsigned int, char*, unsigned int*) noexcept {
  return kNotImplemented;
}

int enumKey(void*, unsigned int, char*, unsigned int) noexcept {
  return kNotImplemented;
}

int enumValue(void*, unsigned int, char*, unsigned int*, unsigned int*, unsigned int*,
              unsigned char*, unsigned int*) noexcept {
  return kNotImplemented;
}

}  // namespace OsRegistry
}  // namespace LTLib::Platform
