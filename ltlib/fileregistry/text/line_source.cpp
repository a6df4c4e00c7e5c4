#include "ltlib/fileregistry/text/line_source.h"

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {

// A value may itself end in a carriage return; the store's own first line, a header, never does.
void LineSource::dropCarriageReturn(std::string& line, std::size_t start) {
  const bool pair = line.size() > start && line.back() == '\r';
  if (m_ends == LineEnds::kAsTheFirst) {
    m_ends = LineEnds::kLineFeed;
    m_pairs = pair;
  }
  if (m_pairs && pair) {
    line.pop_back();
  }
}

// Whether a line was there is told by its bytes and its end, not by its text: a line of a NUL alone
// is one, and so is the rest of a file without a last line feed.
bool LineSource::appendLine(std::string& line) {
  const std::size_t start = line.size();
  bool taken = false;
  for (;;) {
    if (m_piece.empty()) {
      m_piece = nextPiece();
      if (m_piece.empty()) {
        m_count += taken ? 1 : 0;
        return taken;
      }
    }
    taken = true;
    const std::size_t end = m_piece.find('\n');
    line += m_piece.substr(0, end);
    if (end != std::string_view::npos) {
      m_piece.remove_prefix(end + 1);
      dropCarriageReturn(line, start);
      ++m_count;
      return true;
    }
    m_piece = {};
  }
}

std::string_view FileLineSource::nextPiece() {
  std::size_t taken = 0;
  if (Platform::fileCalls().read(m_file, m_buffer.data(), m_buffer.size(), &taken) !=
      Platform::FileResult::kDone) {
    throw QSException("kFileRegistry", __LINE__, kFailure, "registry file cannot be read");
  }
  return std::string_view(m_buffer).substr(0, taken);
}

}  // namespace LTLib::detail
