#include "ltreg/cli/output.h"

#include <algorithm>
#include <utility>

#include "ltlib/platform/terminal.h"
#include "ltreg/cli/failure.h"
#include "ltreg/cli/progress.h"
#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

// So many rows are put in line with one another; more would keep the first from being seen.
constexpr std::size_t kMostRows = 500;
// One long name must not push all others off the screen.
constexpr std::size_t kWidest = 64;

constexpr char kNoColour[] = "\x1B[0m";

const char* startOf(Colour colour) {
  switch (colour) {
    case Colour::kKey:
      return "\x1B[1;34m";
    case Colour::kType:
      return "\x1B[36m";
    case Colour::kAdded:
      return "\x1B[32m";
    case Colour::kRemoved:
      return "\x1B[31m";
    default:
      return "";
  }
}

// What a row is about shows in its first cell.
Colour colourOf(std::string_view first) {
  return first == "key"                      ? Colour::kKey
         : first == "+" || first == "set"    ? Colour::kAdded
         : first == "-" || first == "delete" ? Colour::kRemoved
                                             : Colour::kType;
}

std::string paintedRow(const Output& output, std::string_view first, std::string_view rest) {
  const Colour colour = colourOf(first);
  return colour == Colour::kType ? output.painted(colour, first).append(rest)
                                 : output.painted(colour, std::string(first).append(rest));
}

std::vector<std::string> cellsOf(std::string_view text, std::size_t columns) {
  std::vector<std::string> cells;
  std::size_t end = text.find('\t');
  while (cells.size() < columns && end != std::string_view::npos) {
    cells.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
    end = text.find('\t');
  }
  cells.push_back(commasForTabs(text));
  return cells;
}

}  // namespace

void Output::line(std::string_view text) {
  bytes(text);
  write(std::string_view(&m_end, 1));
}

void Output::row(std::string_view cells, std::size_t columns) {
  if (!m_look.columns) {
    const std::string_view first = cells.substr(0, cells.find('\t'));
    line(paintedRow(*this, first, cells.substr(first.size())));
    return;
  }
  m_rows.push_back(cellsOf(cells, columns));
  if (m_rows.size() == kMostRows) {
    writeRows();
  }
}

void Output::writeRows() {
  std::vector<std::size_t> widths;
  for (const Row& row : m_rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i + 1 < row.size(); ++i) {
      widths[i] = std::min(kWidest, std::max(widths[i], widthOf(row[i])));
    }
  }
  for (const Row& row : std::exchange(m_rows, {})) {
    write(rowText(row, widths) + '\n');
  }
}

std::string Output::rowText(const Row& row, const std::vector<std::size_t>& widths) const {
  std::string rest;
  for (std::size_t i = 1; i < row.size(); ++i) {
    rest += blanksBehind(row[i - 1], widths[i - 1]) + "  " + row[i];
  }
  return paintedRow(*this, row.front(), rest);
}

void Output::bytes(std::string_view all) {
  writeRows();
  write(all);
}

std::string Output::painted(Colour colour, std::string_view text) const {
  return m_look.colours && colour != Colour::kPlain
             ? std::string(startOf(colour)).append(text).append(kNoColour)
             : std::string(text);
}

// A later write that goes well must not hide one that failed, as on a disk that was full for a moment.
void Output::write(std::string_view all) {
  Progress::hide();
  m_failed = m_failed || m_stream == nullptr || !LTLib::Platform::writeText(m_stream, all);
}

void Output::finish() {
  writeRows();
  m_failed = m_failed || (m_stream != nullptr && std::fflush(m_stream) != 0);
  if (m_failed) {
    throw Failure(ExitCode::kStoreFailed,
                  "standard output cannot be written (is it closed, or its disk full?)");
  }
}

}  // namespace ltreg
