#include "ltlib/fileregistry/line_source.h"

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {

bool LineSource::appendLine(std::string& line) {
  bool taken = false;
  for (;;) {
    if (m_piece.empty()) {
      m_piece = nextPiece();
      if (m_piece.empty()) {
        return taken;
      }
    }
    taken = true;
    const std::size_t end = m_piece.find('\n');
    line += m_piece.substr(0, end);
    if (end != std::string_view::npos) {
      m_piece.remove_prefix(end + 1);
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
