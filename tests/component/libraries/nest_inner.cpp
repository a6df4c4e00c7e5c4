// The class that the factory of another library loads, and one of the unknown form.
#include "ltlib/ltlib.h"

namespace {

const iqsDllLoader::Registrar s_plain(
    "Nest.Inner", []() -> void* { return new int(1); },
    [](void* instance) { delete static_cast<int*>(instance); });

const iqsDllLoader::Registrar s_unknown("Nest.Unknown", [](iqsUnknown* outer, iqsCUnknown** out) {
  *out = new iqsCUnknown(outer);
  return LTLib::kSuccess;
});

}  // namespace
