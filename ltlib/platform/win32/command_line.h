// The one text in which Windows hands a program its words.
#ifndef LTLIB_PLATFORM_WIN32_COMMAND_LINE_H
#define LTLIB_PLATFORM_WIN32_COMMAND_LINE_H

#include <string>
#include <vector>

namespace LTLib::Platform {

/// A word as the C runtime takes it apart again: backslashes count twice ahead of a quote.
inline void appendWord(std::string& line, const std::string& word) {
  line += line.empty() ? "\"" : " \"";
  std::size_t backslashes = 0;
  for (const char byte : word) {
    if (byte == '"') {
      line.append(backslashes + 1, '\\');
    }
    backslashes = byte == '\\' ? backslashes + 1 : 0;
    line += byte;
  }
  line.append(backslashes, '\\') += '"';
}

[[nodiscard]] inline std::string commandLine(const std::string& program,
                                             const std::vector<std::string>& arguments) {
  std::string line;
  appendWord(line, program);
  for (const std::string& argument : arguments) {
    appendWord(line, argument);
  }
  return line;
}

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_WIN32_COMMAND_LINE_H
