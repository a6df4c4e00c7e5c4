#include "ltlib/fileregistry/text/line_source.h"

#include <algorithm>
#include <cstring>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {

// A value may itself end in a carriage return; the store's own first line, a header, never does.
std::string_view LineSource::withoutCarriageReturn(std::string_view line) {
  const bool pair = line.ends_with('\r');
  if (m_ends == LineEnds::kAsTheFirst) {
    m_ends = LineEnds::kLineFeed;
    m_pairs = pair;
  }
  if (m_pairs && pair) {
    line.remove_suffix(1);
  }
  return line;
}

// Whether a line was there is told by its bytes and its end, not by its text: a line of a NUL alone
// is one, and so is the rest of a file without a last line feed.
bool LineSource::takeLine(std::string_view& line) {
  std::size_t searched = 0;
  for (;;) {
    const auto held = static_cast<std::size_t>(m_end - m_begin);
    if (held != searched) {
      if (void* const feed = std::memchr(m_begin + searched, '\n', held - searched);
          feed != nullptr) {
        char* const end = static_cast<char*>(feed);
        line = withoutCarriageReturn({m_begin, end});
        m_begin = end + 1;
        ++m_count;
        return true;
      }
      searched = held;
    }
    if (!readOn()) {
      line = {m_begin, m_end};
      m_begin = m_end;
      m_count += held != 0 ? 1 : 0;
      return held != 0;
    }
  }
}

// Where a block is full, what it holds of a line not taken yet begins the next one: lines that were
// taken stay where they are.
bool LineSource::readOn() {
  constexpr std::size_t kBlock = 65536;
  if (m_end == m_limit) {
    const auto held = static_cast<std::size_t>(m_end - m_begin);
    const std::size_t size = std::max(kBlock, 2 * held);
    char* const block = m_store.newBlock(size);
    m_end = std::copy(m_begin, m_end, block);
    m_begin = block;
    m_limit = block + size;
  }
  const std::size_t taken = read(m_end, static_cast<std::size_t>(m_limit - m_end));
  m_hasNul = m_hasNul || (taken != 0 && std::memchr(m_end, '\0', taken) != nullptr);
  m_end += taken;
  return taken != 0;
}

std::size_t FileLineSource::read(char* to, std::size_t room) {
  std::size_t taken = 0;
  if (Platform::fileCalls().read(m_file, to, room, &taken) != Platform::FileResult::kDone) {
    throw QSException("kFileRegistry", __LINE__, kFailure, "registry file cannot be read");
  }
  return taken;
}

std::size_t TextLineSource::read(char* to, std::size_t room) {
  const std::string_view taken = m_text.substr(0, room);
  std::copy(taken.begin(), taken.end(), to);
  m_text.remove_prefix(taken.size());
  return taken.size();
}

}  // namespace LTLib::detail
