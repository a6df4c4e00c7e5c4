// How tests start programs on Windows, which hands a program its words in one text.
#ifndef LTLIB_TESTS_SUPPORT_COMMAND_LINE_WIN32_H
#define LTLIB_TESTS_SUPPORT_COMMAND_LINE_WIN32_H

#include <windows.h>

#include <string>
#include <vector>

namespace LTLib::Testing {

// A word as the C runtime takes it apart again: backslashes count twice ahead of a quote.
inline std::string quotedWord(const std::string& word) {
  std::string text = "\"";
  std::size_t backslashes = 0;
  for (const char byte : word) {
    if (byte == '"') {
      text.append(backslashes + 1, '\\');
    }
    backslashes = byte == '\\' ? backslashes + 1 : 0;
    text += byte;
  }
  return text.append(backslashes, '\\') + '"';
}

inline std::string commandLine(const std::string& program, const std::vector<std::string>& words) {
  std::string text = quotedWord(program);
  for (const std::string& word : words) {
    text += ' ' + quotedWord(word);
  }
  return text;
}

// Calls a function that starts a program and tells whether it did. Once in some thousand times Wine
// cannot, with an error of its own inside that does not last.
template <class Start>
bool started(Start start) {
  for (int left = 5; left > 0; --left) {
    if (start() != 0) {
      return true;
    }
    if (GetLastError() != ERROR_INTERNAL_ERROR) {
      return false;
    }
  }
  return false;
}

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_COMMAND_LINE_WIN32_H
