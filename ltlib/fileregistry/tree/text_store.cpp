#include "ltlib/fileregistry/tree/text_store.h"

#include <algorithm>

namespace LTLib::detail {

char* TextStore::newBlock(std::size_t size) {
  return m_blocks.emplace_back(std::make_unique_for_overwrite<char[]>(size)).get();
}

// A text that would take much of a block gets one of its own, since what is left of a block is lost
// when the next begins.
std::string_view TextStore::keep(std::string_view text) {
  constexpr std::size_t kBlock = 4096;
  char* kept = m_free;
  if (text.size() > kBlock / 4) {
    kept = newBlock(text.size());
  } else {
    if (text.size() > m_room) {
      kept = newBlock(kBlock);
      m_room = kBlock;
    }
    m_free = kept + text.size();
    m_room -= text.size();
  }
  std::copy(text.begin(), text.end(), kept);
  return {kept, text.size()};
}

}  // namespace LTLib::detail
