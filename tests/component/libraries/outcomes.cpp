// A class for each way in which a creation can end.
#include <stdexcept>

#include "ltlib/ltlib.h"
#include "tests/component/libraries/stage.h"

namespace {

using Registrar = iqsDllLoader::Registrar;

// Tells its end, and whether it is aggregated.
class Component : public iqsCUnknown {
 public:
  explicit Component(iqsUnknown* outer, QSResult ready = LTLib::kSuccess)
      : iqsCUnknown(outer), m_ready(ready) {
    Stage::note(outer != nullptr ? "made inside" : "made");
  }
  ~Component() override { Stage::note("ended"); }

  QSResult Init() override {
    Stage::note("initialised");
    return m_ready;
  }

 private:
  QSResult m_ready;
};

class ThrowingComponent : public Component {
 public:
  using Component::Component;

  // The creation's reference is lost with the exception, so the object ends itself.
  QSResult Init() override {
    InnerRelease();
    throw std::runtime_error("from Init");
  }
};

QSResult create(iqsUnknown* outer, iqsCUnknown** out) {
  *out = new Component(outer);
  return LTLib::kSuccess;
}

const Registrar s_good("Outcome.Good", create);
const Registrar s_root("IQS_UNKNOWN", create);
const Registrar s_positive("Outcome.Positive", [](iqsUnknown* outer, iqsCUnknown** out) {
  *out = new Component(outer, 5);
  return 3;
});
const Registrar s_refusing("Outcome.Refuses",
                           [](iqsUnknown*, iqsCUnknown**) { return LTLib::kFailure; });
const Registrar s_empty("Outcome.StoresNothing",
                        [](iqsUnknown*, iqsCUnknown**) { return LTLib::kSuccess; });
const Registrar s_plain(
    "Outcome.Plain", []() -> void* { throw std::logic_error("called as another form"); }, nullptr);
const Registrar s_own("Outcome.ThrowsOwn", [](iqsUnknown*, iqsCUnknown**) -> QSResult {
  throw QSException("outcomes", __LINE__, LTLib::kNotFound, "own exception");
});
const Registrar s_standard("Outcome.ThrowsStandard", [](iqsUnknown*, iqsCUnknown**) -> QSResult {
  throw std::out_of_range("standard exception");
});
const Registrar s_number("Outcome.ThrowsNumber",
                         [](iqsUnknown*, iqsCUnknown**) -> QSResult { throw 7; });
const Registrar s_unready("Outcome.InitFails", [](iqsUnknown* outer, iqsCUnknown** out) {
  *out = new Component(outer, LTLib::kAlreadyPresent);
  return LTLib::kSuccess;
});
const Registrar s_throwing("Outcome.InitThrows", [](iqsUnknown* outer, iqsCUnknown** out) {
  *out = new ThrowingComponent(outer);
  return LTLib::kSuccess;
});

}  // namespace
