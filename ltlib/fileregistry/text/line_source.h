// Lines of a text, taken one after the other from a file or from memory.
#ifndef LTLIB_FILEREGISTRY_TEXT_LINE_SOURCE_H
#define LTLIB_FILEREGISTRY_TEXT_LINE_SOURCE_H

#include <cstddef>
#include <string_view>

#include "ltlib/fileregistry/tree/text_store.h"

namespace LTLib {

namespace Platform {
struct File;
}

namespace detail {

/// Reads a text into blocks of a store, so that its lines stay where they are as long as the store.
class LineSource {
 public:
  /// The byte or bytes that end a line.
  enum class LineEnds {
    kLineFeed,
    kAsTheFirst,  // carriage return and line feed throughout if the first line ends in them
  };

  virtual ~LineSource() = default;
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;

  /// The bytes up to the next line end, which is passed over, or up to the end of the text. False if
  /// not a single byte was left.
  bool takeLine(std::string_view& line);

  /// A copy of the text that stays as long as the lines do.
  [[nodiscard]] std::string_view keep(std::string_view text) { return m_store.keep(text); }

  /// Whether there was a NUL in what was read so far, of which lines are then to be searched.
  [[nodiscard]] bool hasNul() const { return m_hasNul; }

  /// How many lines were taken so far.
  [[nodiscard]] std::size_t count() const { return m_count; }

 protected:
  LineSource(TextStore& store, LineEnds ends) : m_store(store), m_ends(ends) {}

  /// Puts the next bytes of the text to a place, up to so many; 0 at its end.
  virtual std::size_t read(char* to, std::size_t room) = 0;

 private:
  bool readOn();
  std::string_view withoutCarriageReturn(std::string_view line);

  TextStore& m_store;
  char* m_begin = nullptr;  // of the bytes that were read and not taken
  char* m_end = nullptr;
  char* m_limit = nullptr;  // of the block
  std::size_t m_count = 0;
  LineEnds m_ends;
  bool m_pairs = false;
  bool m_hasNul = false;
};

/// Reads an open file, which stays the caller's, with the line ends of whichever system wrote it.
/// A read error is thrown as QSException: a file that breaks off in the middle must not pass for a
/// short one.
class FileLineSource final : public LineSource {
 public:
  FileLineSource(Platform::File& file, TextStore& store)
      : LineSource(store, LineEnds::kAsTheFirst), m_file(file) {}

 protected:
  std::size_t read(char* to, std::size_t room) override;

 private:
  Platform::File& m_file;
};

/// Reads a text in memory.
class TextLineSource final : public LineSource {
 public:
  TextLineSource(std::string_view text, TextStore& store)
      : LineSource(store, LineEnds::kLineFeed), m_text(text) {}

 protected:
  std::size_t read(char* to, std::size_t room) override;

 private:
  std::string_view m_text;
};

}  // namespace detail
}  // namespace LTLib

#endif  // LTLIB_FILEREGISTRY_TEXT_LINE_SOURCE_H
