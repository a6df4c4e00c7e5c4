// Any bytes as a store file: the reader survives them, however they arrive, and what the writer
// makes of the tree reads back as the same tree.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/demand.h"
#include "tests/support/text_tree.h"

using LTLib::Fuzzing::demand;
using namespace LTLib::Testing;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const Reading first = readText(text);
  const Reading pieces = readText(text, 7);
  demand(pieces.end == first.end && showTree(*pieces.tree) == showTree(*first.tree),
         "the tree depends on the pieces in which the text arrives");

  const std::optional<std::string> written = writeText(*first.tree);
  if (written.has_value()) {
    const Reading second = readText(*written);
    demand(second.end == "whole", "the written text does not load");
    demand(showFields(*second.tree) == showFields(*first.tree),
           "the written text loads as another tree");
    demand(writeText(*second.tree) == written, "a second save writes another text");
  }
  return 0;
}
