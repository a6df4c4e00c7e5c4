// A text under replacement from left to right: what is settled on the left, what is still to be
// read on the right, and a gap between them that takes up the difference of lengths. Every byte
// crosses the gap once, so that a text costs the same per byte whatever its length.
#ifndef LTLIB_VARIABLES_GAP_TEXT_H
#define LTLIB_VARIABLES_GAP_TEXT_H

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace LTLib::detail {

class GapText {
 public:
  /// Works inside `text`, which the caller leaves alone until this object ends. All of it is
  /// pending at first.
  explicit GapText(std::string& text) : m_text(text) {}

  /// Closes the gap: `text` is the settled part and the pending part, one behind the other.
  ~GapText() { m_text.erase(m_settled, m_pending - m_settled); }

  GapText(const GapText&) = delete;
  GapText& operator=(const GapText&) = delete;

  std::size_t settledSize() const { return m_settled; }
  std::size_t pendingSize() const { return m_text.size() - m_pending; }
  std::size_t size() const { return m_settled + pendingSize(); }

  /// Valid until the next change.
  std::string_view pending() const { return std::string_view(m_text).substr(m_pending); }

  /// Settles the first `count` pending bytes.
  void settle(std::size_t count) {
    // Until something is replaced there is no gap, and nothing to move.
    if (gap() != 0) {
      std::memmove(m_text.data() + m_settled, m_text.data() + m_pending, count);
    }
    m_settled += count;
    m_pending += count;
  }

  /// Drops the first `count` pending bytes and makes room for `room` bytes in their place. On
  /// failure nothing has changed.
  void drop(std::size_t count, std::size_t room) {
    if (room > count + gap()) {
      makeRoom(room - count);
    }
    m_pending += count;
  }

  // These fill the room that `drop` made.

  /// Puts bytes at the end of the settled part. `bytes` lie outside this text.
  void appendSettled(std::string_view bytes) {
    bytes.copy(m_text.data() + m_settled, bytes.size());
    m_settled += bytes.size();
  }

  /// Puts a copy of settled bytes at the end of the settled part.
  void repeatSettled(std::size_t start, std::size_t count);

  /// Puts bytes in front of the pending part. `bytes` lie outside this text.
  void prependPending(std::string_view bytes);

  /// The text as it stands, without the gap.
  std::string str() const { return m_text.substr(0, m_settled).append(pending()); }

 private:
  std::size_t gap() const { return m_pending - m_settled; }
  void makeRoom(std::size_t count);

  // Not side by side: both go on by the same count, which the compiler would make one wide addition
  // whose load has to wait until the two stores before it are through.
  std::size_t m_settled = 0;  // the end of the settled part
  std::string& m_text;
  std::size_t m_pending = 0;  // the start of the pending part
};

}  // namespace LTLib::detail

#endif  // LTLIB_VARIABLES_GAP_TEXT_H
