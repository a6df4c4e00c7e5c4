// Two classes in one library, one of each form.
#include <memory>

#include "ltlib/ltlib.h"
#include "tests/component/libraries/stage.h"

namespace {

const Stage::Presence s_presence("pair");

// Brings an inline static of the standard library, which pins this one where it is built to be
// unique in the process.
const std::shared_ptr<int> s_last = std::make_shared<int>(0);

const iqsDllLoader::Registrar s_unknown("Pair.Unknown", [](iqsUnknown* outer, iqsCUnknown** out) {
  *out = new iqsCUnknown(outer);
  return LTLib::kSuccess;
});
const iqsDllLoader::Registrar s_plain(
    "Pair.Plain", []() -> void* { return new int(++*s_last); },
    [](void* instance) {
      Stage::note("plain ends");
      delete static_cast<int*>(instance);
    });

}  // namespace
