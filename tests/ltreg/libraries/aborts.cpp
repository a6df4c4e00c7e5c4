// Aborts while it loads.
#include <cstdlib>

namespace {

struct Aborting {
  Aborting() { std::abort(); }
};

const Aborting s_aborting;

}  // namespace
