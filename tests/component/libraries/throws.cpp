// Offers a class, throws while it loads, and comes to offer no other.
#include <stdexcept>

#include "ltlib/ltlib.h"

namespace {

QSResult create(iqsUnknown* outer, iqsCUnknown** out) {
  *out = new iqsCUnknown(outer);
  return LTLib::kSuccess;
}

const iqsDllLoader::Registrar s_early("Throws.Early", create);

const struct Throwing {
  Throwing() { throw std::runtime_error("from a static object"); }
} s_throwing;

const iqsDllLoader::Registrar s_late("Throws.Late", create);

}  // namespace
