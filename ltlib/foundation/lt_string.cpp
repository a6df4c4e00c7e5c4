#include "ltlib/foundation/lt_string.h"

#include <algorithm>
#include <sstream>

void LTString::replace(char from, char to) {
  std::replace(m_text.begin(), m_text.end(), from, to);
}

// Builds the new text beside the old one: linear, and safe when an argument is this string.
void LTString::replace(const LTString& find, const LTString& with) {
  if (find.m_text.empty() || with.m_text.empty()) {
    return;
  }
  std::string made;
  std::size_t from = 0;
  for (std::size_t found = m_text.find(find.m_text); found != std::string::npos;
       found = m_text.find(find.m_text, from)) {
    made.append(m_text, from, found - from).append(with.m_text);
    from = found + find.m_text.size();
  }
  made.append(m_text, from);
  m_text.swap(made);
}

LTString LTString::substr(std::size_t pos, std::size_t count) const {
  return m_text.substr(pos, count);
}

void LTString::AppendNumber(int value) {
  m_text += std::to_string(value);
}

std::string LTString::intToString(long long value) {
  // A stream takes the global locale's separators, as std::to_string would not.
  std::ostringstream text;
  text << value;
  return text.str();
}
