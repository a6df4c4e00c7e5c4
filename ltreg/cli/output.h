// Where the tool's data goes, and how it looks there.
#ifndef LTREG_CLI_OUTPUT_H
#define LTREG_CLI_OUTPUT_H

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "ltreg/cli/json.h"

namespace ltreg {

/// For whom the data is written. Scripts get neither.
struct Look {
  bool columns = false;  // in line, as people read tables
  bool colours = false;
};

enum class Colour { kPlain, kKey, kType, kAdded, kRemoved };

class Output {
 public:
  /// Writes to the stream, which stays the caller's. With a null one every write fails.
  explicit Output(std::FILE* stream, Look look = {}) : m_stream(stream), m_look(look) {}

  ~Output() { writeRows(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  [[nodiscard]] const Look& look() const { return m_look; }

  /// Ends lines with that byte from now on.
  void endLinesWith(char byte) { m_end = byte; }

  /// Writes a text and the end of a line, a line feed at first.
  void line(std::string_view text);

  /// Writes a line of cells that tabs part. For people the first `columns` of a run of rows are in
  /// line, and what is left is one more column, its tabs shown as commas.
  void row(std::string_view cells, std::size_t columns);

  /// Writes the text of JSON.
  void json(const Json& value) { line(value.text()); }

  /// Writes bytes as they are.
  void bytes(std::string_view all);

  /// The text in a colour, if colours are wanted.
  [[nodiscard]] std::string painted(Colour colour, std::string_view text) const;

  /// Hands everything on. Throws Failure if any of it got lost.
  void finish();

 private:
  using Row = std::vector<std::string>;  // the last cell is not in line

  void write(std::string_view all);
  void writeRows();
  [[nodiscard]] std::string rowText(const Row& row, const std::vector<std::size_t>& widths) const;

  std::FILE* m_stream;
  Look m_look;
  char m_end = '\n';
  bool m_failed = false;
  std::vector<Row> m_rows;  // whose widths are not known yet
};

}  // namespace ltreg

#endif  // LTREG_CLI_OUTPUT_H
