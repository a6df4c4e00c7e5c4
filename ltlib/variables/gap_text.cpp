#include "ltlib/variables/gap_text.h"

#include <algorithm>
#include <cstring>

namespace LTLib::detail {

void GapText::settle(std::size_t count) {
  // Until something is replaced there is no gap, and nothing to move.
  if (m_settled != m_pending) {
    std::memmove(m_text.data() + m_settled, m_text.data() + m_pending, count);
  }
  m_settled += count;
  m_pending += count;
}

void GapText::drop(std::size_t count, std::size_t room) {
  makeRoom(room - std::min(room, count));
  m_pending += count;
}

void GapText::appendSettled(std::string_view bytes) {
  bytes.copy(m_text.data() + m_settled, bytes.size());
  m_settled += bytes.size();
}

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
  const std::size_t gap = m_pending - m_settled;
  if (count <= gap) {
    return;
  }
  const std::size_t ahead = pendingSize();
  const std::size_t extra = std::max(count - gap, size() / 2);
  m_text.resize(m_text.size() + extra);
  std::memmove(m_text.data() + m_pending + extra, m_text.data() + m_pending, ahead);
  m_pending += extra;
}

}  // namespace LTLib::detail
