// Two classes in one library, one of each form.
#include "ltlib/ltlib.h"
#include "tests/component/libraries/stage.h"

namespace {

const Stage::Presence s_presence("pair");

// Its static would pin the library, were it marked as unique in the process.
template <class Number>
struct Sequence {
  static inline Number s_last{0};
};

class Component : public iqsCUnknown {
 public:
  using iqsCUnknown::iqsCUnknown;
  ~Component() override { Stage::note("component ends"); }
};

QSResult createComponent(iqsUnknown* outer, iqsCUnknown** out) {
  *out = new Component(outer);
  return LTLib::kSuccess;
}

const iqsDllLoader::Registrar s_unknown("Pair.Unknown", createComponent);
const iqsDllLoader::Registrar s_plain(
    "Pair.Plain", []() -> void* { return new int(++Sequence<int>::s_last); },
    [](void* instance) {
      Stage::note("plain ends");
      delete static_cast<int*>(instance);
    });

}  // namespace
