// Any bytes as a store file: the reader survives them, however they arrive, and what the writer
// makes of the tree reads back as the same tree.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/fuzz_tree.h"

using namespace LTLib::Fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const Reading first = readTree(text);
  const std::string shown = showFields(*first.root);
  const Reading pieces = readTree(text, 7);
  demand(pieces.whole == first.whole && showFields(*pieces.root) == shown,
         "the tree depends on the pieces in which the text arrives");

  const std::optional<std::string> written = writeTree(*first.root);
  if (written.has_value()) {
    const Reading second = readTree(*written);
    demand(second.whole, "the written text does not load");
    demand(showFields(*second.root) == shown, "the written text loads as another tree");
    demand(writeTree(*second.root) == written, "a second save writes another text");
  }
  return 0;
}
