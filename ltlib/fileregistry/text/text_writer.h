// From sections and fields to the text of a store file.
//
// The text is a strict subset of what the reader takes, with no escapes: one block for each
// section that has fields, parents ahead of their children, everything in order of arrival.
#ifndef LTLIB_FILEREGISTRY_TEXT_TEXT_WRITER_H
#define LTLIB_FILEREGISTRY_TEXT_TEXT_WRITER_H

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "ltlib/fileregistry/tree/config_tree.h"

namespace LTLib {

namespace Platform {
struct File;
}

namespace detail {

/// Where the writer's lines go. A line that cannot be written is thrown as QSException "registry
/// write failed", with the system's words behind it, and nothing is written after it.
class LineSink {
 public:
  explicit LineSink(Platform::File& file) : m_file(file) {}

  /// Takes the texts one behind the other. Holds them back at first: a call of the system for each
  /// line would take longer than all the rest of a save.
  void put(std::initializer_list<std::string_view> texts);

  /// Hands over what is still held back.
  void flush();

 private:
  static constexpr std::size_t kPiece = 65536;

  void write(std::string_view text);

  Platform::File& m_file;
  std::unique_ptr<char[]> m_held = std::make_unique_for_overwrite<char[]>(kPiece);
  std::size_t m_size = 0;
};

/// What stands in a line between name and text.
[[nodiscard]] std::string_view cfgOpeningOf(QSCfgTypeCode code);

/// The line of a field, with its line feed.
[[nodiscard]] std::string cfgFieldLine(std::string_view name, QSCfgTypeCode code,
                                       std::string_view text);

/// Writes the block of one section, whose header is that of `path`.
void cfgWriteFields(LineSink& sink, const QSCfgDataSection& section, std::string_view path);

/// Writes a child of the root and everything below it. What no file can hold is thrown as
/// QSException that names it.
void cfgWriteSection(LineSink& sink, QSCfgDataSection& section);

}  // namespace detail
}  // namespace LTLib

#endif  // LTLIB_FILEREGISTRY_TEXT_TEXT_WRITER_H
