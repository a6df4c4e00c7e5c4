// The text of a quoted value while it is read, which may take several lines.
//
// The last quote ends the text unless a backslash stands behind it; then the text goes on in the
// next line, and the backslash and all behind it go. Both are sought in all the text so far, old
// parts included; their places are kept, so that no line is searched twice.
#ifndef LTLIB_FILEREGISTRY_TEXT_QUOTED_TEXT_H
#define LTLIB_FILEREGISTRY_TEXT_QUOTED_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace LTLib::detail {

class QuotedText {
 public:
  /// Starts with what follows the opening quote on its line.
  explicit QuotedText(std::string_view first) { append(first); }

  /// Whether a last quote ends the text.
  [[nodiscard]] bool closed() const {
    return !m_quotes.empty() && (m_backslashes.empty() || m_backslashes.back() < m_quotes.back());
  }

  /// Cuts an unclosed text at its last backslash; false if it has none.
  bool dropBackslash();

  void append(std::string_view line);

  [[nodiscard]] std::string whole() const { return m_text; }

  /// Requires: the text is closed.
  [[nodiscard]] std::string upToLastQuote() const { return m_text.substr(0, m_quotes.back()); }

 private:
  std::string m_text;
  std::vector<std::size_t> m_quotes;       // the places of all quotes
  std::vector<std::size_t> m_backslashes;  // and of all backslashes
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TEXT_QUOTED_TEXT_H
