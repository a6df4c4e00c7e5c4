#include "ltlib/component/dll_loader_tables.h"

#include "ltlib/foundation/do_once.h"

namespace LTLib::detail {
namespace {

constinit ltDoOnce_t s_once;
constinit DllLoaderTables* s_tables = nullptr;

void makeTables() {
  try {
    s_tables = new DllLoaderTables;
  } catch (...) {
    // Without tables every operation of the loader does nothing, and says so by its result.
  }
}

}  // namespace

DllLoaderTables* dllLoaderTables() {
  ltDoOnce(s_once, makeTables);
  return s_tables;
}

}  // namespace LTLib::detail
