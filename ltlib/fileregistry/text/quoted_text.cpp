#include "ltlib/fileregistry/text/quoted_text.h"

namespace LTLib::detail {

bool QuotedText::dropBackslash() {
  if (m_backslashes.empty()) {
    return false;
  }
  const std::size_t length = m_backslashes.back();
  m_backslashes.pop_back();
  m_text.resize(length);
  while (!m_quotes.empty() && m_quotes.back() >= length) {
    m_quotes.pop_back();
  }
  return true;
}

void QuotedText::append(std::string_view line) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') {
      m_quotes.push_back(m_text.size() + i);
    } else if (line[i] == '\\') {
      m_backslashes.push_back(m_text.size() + i);
    }
  }
  m_text += line;
}

}  // namespace LTLib::detail
