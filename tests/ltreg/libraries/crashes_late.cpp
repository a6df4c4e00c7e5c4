// Offers a class that crashes when an object of it is made, and one after which the end of the
// process crashes.
#include <cstdio>
#include <cstdlib>

#include "ltlib/ltlib.h"

namespace {

struct Late {
  bool isDue = false;
  ~Late() { isDue ? std::abort() : void(); }
} s_late;

QSResult crash(iqsUnknown*, iqsCUnknown**) {
  std::abort();
}

// What it prints must not be taken for the tool's data.
QSResult arm(iqsUnknown* outer, iqsCUnknown** out) {
  std::puts("verdict 0 printed by a library");
  s_late.isDue = true;
  *out = new iqsCUnknown(outer);
  return LTLib::kSuccess;
}

const iqsDllLoader::Registrar s_now("Crash.Now", crash);
const iqsDllLoader::Registrar s_atEnd("Crash.AtEnd", arm);

}  // namespace
