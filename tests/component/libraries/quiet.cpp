// A library that registers nothing.
#include "tests/component/libraries/stage.h"

namespace {

const Stage::Presence s_presence("quiet");

}  // namespace
