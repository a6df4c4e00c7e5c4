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

  /// Writes a text and a line feed.
  void line(std::string_view text);

  /// Hands everything on. Throws Failure if any of it got lost.
  void finish();

 private:
  std::FILE* m_stream;
  bool m_failed = false;
};

}  // namespace ltreg

#endif  // LTREG_CLI_OUTPUT_H
