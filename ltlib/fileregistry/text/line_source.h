// Lines of a text, taken one after the other from a file or from memory.
#ifndef LTLIB_FILEREGISTRY_TEXT_LINE_SOURCE_H
#define LTLIB_FILEREGISTRY_TEXT_LINE_SOURCE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace LTLib {

namespace Platform {
struct File;
}

namespace detail {

class LineSource {
 public:
  /// The byte or bytes that end a line.
  enum class LineEnds {
    kLineFeed,
    kAsTheFirst,  // carriage return and line feed throughout if the first line ends in them
  };

  explicit LineSource(LineEnds ends = LineEnds::kLineFeed) : m_ends(ends) {}
  virtual ~LineSource() = default;
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;

  /// Appends the bytes up to the next line end, which is passed over, or up to the end of the
  /// text. False if not a single byte was left.
  bool appendLine(std::string& line);

  /// How many lines were taken so far.
  [[nodiscard]] std::size_t count() const { return m_count; }

 protected:
  /// The next bytes of the text, valid until the next call; empty at its end.
  virtual std::string_view nextPiece() = 0;

 private:
  void dropCarriageReturn(std::string& line, std::size_t start);

  std::string_view m_piece;
  std::size_t m_count = 0;
  LineEnds m_ends;
  bool m_pairs = false;
};

/// Reads an open file, which stays the caller's, with the line ends of whichever system wrote it.
/// A read error is thrown as QSException: a file that breaks off in the middle must not pass for a
/// short one.
class FileLineSource final : public LineSource {
 public:
  explicit FileLineSource(Platform::File& file)
      : LineSource(LineEnds::kAsTheFirst), m_file(file), m_buffer(kPiece, '\0') {}

 protected:
  std::string_view nextPiece() override;

 private:
  static constexpr std::size_t kPiece = 65536;

  Platform::File& m_file;
  std::string m_buffer;
};

/// Reads a text in memory, which must outlive the source.
class TextLineSource final : public LineSource {
 public:
  explicit TextLineSource(std::string_view text) : m_text(text) {}

 protected:
  std::string_view nextPiece() override {
    const std::string_view all = m_text;
    m_text = {};
    return all;
  }

 private:
  std::string_view m_text;
};

}  // namespace detail
}  // namespace LTLib

#endif  // LTLIB_FILEREGISTRY_TEXT_LINE_SOURCE_H
