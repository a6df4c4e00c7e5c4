// A library that offers one class, and by the way holds the code of those whose registrars sit in
// the program.
#include "ltlib/ltlib.h"

namespace {

QSResult create(iqsUnknown* outer, iqsCUnknown** out) {
  *out = new iqsCUnknown(outer);
  return LTLib::kSuccess;
}

// Nothing unless the class has its entry.
const iqsDllLoader::Registrar s_registrar("FirstLoad", create);

}  // namespace
