#include "ltlib/ltlib.h"

namespace {

const iqsDllLoader::Registrar s_part(
    "Consumer.Part", []() -> void* { return new int(7); },
    [](void* instance) { delete static_cast<int*>(instance); });

}  // namespace
