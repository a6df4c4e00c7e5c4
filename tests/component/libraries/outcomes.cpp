// A class for each way in which a creation can end.
#include <stdexcept>

#include "ltlib/ltlib.h"
#include "tests/component/libraries/stage.h"

namespace {

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

class LingeringComponent : public Component {
 public:
  using Component::Component;

  // Declines once.
  bool FinalRelease() override {
    if (std::exchange(m_hasDeclined, true)) {
      return Component::FinalRelease();
    }
    Stage::note("declined");
    m_refCount = 1;
    return false;
  }

 private:
  bool m_hasDeclined = false;
};

template <class Made, QSResult kFactory = 0, QSResult... kInit>
QSResult create(iqsUnknown* outer, iqsCUnknown** out) {
  *out = new Made(outer, kInit...);
  return kFactory;
}

QSResult refuse(iqsUnknown*, iqsCUnknown**) {
  return LTLib::kFailure;
}

QSResult storeNothing(iqsUnknown*, iqsCUnknown**) {
  return LTLib::kSuccess;
}

QSResult throwOwn(iqsUnknown*, iqsCUnknown**) {
  throw QSException("outcomes", __LINE__, LTLib::kNotFound, "own exception");
}

QSResult throwStandard(iqsUnknown*, iqsCUnknown**) {
  throw std::out_of_range("standard exception");
}

QSResult throwNumber(iqsUnknown*, iqsCUnknown**) {
  throw 7;
}

using Registrar = iqsDllLoader::Registrar;

const Registrar s_good("Outcome.Good", create<Component>);
const Registrar s_root("IQS_UNKNOWN", create<Component>);
const Registrar s_positive("Outcome.Positive", create<Component, 3, 5>);
const Registrar s_refusing("Outcome.Refuses", refuse);
const Registrar s_empty("Outcome.StoresNothing", storeNothing);
const Registrar s_own("Outcome.ThrowsOwn", throwOwn);
const Registrar s_standard("Outcome.ThrowsStandard", throwStandard);
const Registrar s_number("Outcome.ThrowsNumber", throwNumber);
const Registrar s_unready("Outcome.InitFails", create<Component, 0, LTLib::kAlreadyPresent>);
const Registrar s_throwing("Outcome.InitThrows", create<ThrowingComponent>);
const Registrar s_lingering("Outcome.Lingers", create<LingeringComponent>);

}  // namespace
