// Where the tool's data goes.
#ifndef LTREG_CLI_OUTPUT_H
#define LTREG_CLI_OUTPUT_H

#include <cstdio>
#include <string_view>

namespace ltreg {

class Output {
 public:
  /// Writes to the stream, which stays the caller's. With a null one every write fails.
  explicit Output(std::FILE* stream) : m_stream(stream) {}

  /// Ends lines with that byte from now on.
  void endLinesWith(char byte) { m_end = byte; }

  /// Writes a text and the end of a line, a line feed at first.
  void line(std::string_view text);

  /// Writes bytes as they are.
  void bytes(std::string_view all);

  /// Hands everything on. Throws Failure if any of it got lost.
  void finish();

 private:
  std::FILE* m_stream;
  char m_end = '\n';
  bool m_failed = false;
};

}  // namespace ltreg

#endif  // LTREG_CLI_OUTPUT_H
