#include "ltlib/variables/gap_text.h"

#include <algorithm>

namespace LTLib::detail {

void GapText::repeatSettled(std::size_t start, std::size_t count) {
  std::memcpy(m_text.data() + m_settled, m_text.data() + start, count);
  m_settled += count;
}

void GapText::prependPending(std::string_view bytes) {
  m_pending -= bytes.size();
  bytes.copy(m_text.data() + m_pending, bytes.size());
}

// Grows by half of the text at least, so that a text that grows by many small steps is moved a
// logarithmic number of times.
void GapText::makeRoom(std::size_t count) {
  const std::size_t ahead = pendingSize();
  const std::size_t extra = std::max(count - gap(), size() / 2);
  m_text.resize(m_text.size() + extra);
  std::memmove(m_text.data() + m_pending + extra, m_text.data() + m_pending, ahead);
  m_pending += extra;
}

}  // namespace LTLib::detail
