// A class without interfaces and words, beside the one of the other source of its library.
#include "ltlib/component.h"

namespace {

class Bare : public LTLib::Component<Bare> {};

}  // namespace

LTLIB_COMPONENT(Bare, "Offers.Bare")
