// Stops with a value of each type that the debugger has a form for.
#include "ltlib/component.h"
#include "ltlib/ltlib.h"
#include "ltlib/settings.h"

int main() {
  [[maybe_unused]] const QSResult result = LTLib::resultFromSystemError(5);
  [[maybe_unused]] const iqsID id("Example.Hello");
  [[maybe_unused]] const UID uid("01234567-89ab-cdef-0123-456789abcdef");
  const LTLib::Key key(LTLib::Root::kUsers, "Software\\Demo");
  const iqs_ptr<iqsSharedObject> shared(new iqsSharedObject);
  const iqs_const_ptr<iqsSharedObject> second(shared);
  const LTLib::ComponentPtr<iqsUnknown> none;
  const QSException thrown("here", 7, LTLib::kNotAvailable, "broken");
  throw QSException(thrown);
}
