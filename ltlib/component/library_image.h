// An ELF or PE file, looked into byte by byte: the system that a program runs on has the structures of
// its own format at most, and whoever made the file need not be trusted.
#ifndef LTLIB_COMPONENT_LIBRARY_IMAGE_H
#define LTLIB_COMPONENT_LIBRARY_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "ltlib/component/library_file.h"

namespace LTLib::detail {

class LibraryImage {
 public:
  explicit LibraryImage(const std::string& pathname);

  [[nodiscard]] const LibraryHeader& header() const { return m_header; }

  /// The bytes of the first section of that name, a text of 8 characters at most. Empty where the
  /// section or the table of sections is not whole, and none where there is no such section.
  [[nodiscard]] std::optional<std::string> section(std::string_view name);

 private:
  void readElf(std::string_view start);
  void readPe(std::string_view start);
  [[nodiscard]] std::string content(std::string_view entry);

  /// The bytes from a place on, fewer where the file ends; and all of them or none.
  [[nodiscard]] std::string piece(std::uint64_t start, std::uint64_t size);
  [[nodiscard]] std::string wholePiece(std::uint64_t start, std::uint64_t size);

  /// A number in the file's byte order, with a zero for each byte that is not there.
  [[nodiscard]] std::uint64_t longNumber(std::string_view bytes, std::size_t at,
                                         std::size_t width) const;
  /// The same for 4 bytes at most.
  [[nodiscard]] unsigned int number(std::string_view bytes, std::size_t at,
                                    std::size_t width) const {
    return static_cast<unsigned int>(longNumber(bytes, at, width));
  }

  std::ifstream m_file;
  std::uint64_t m_size;
  LibraryHeader m_header;
  // The table of sections.
  std::uint64_t m_tableStart = 0;
  std::size_t m_entryCount = 0;
  std::size_t m_entrySize = 0;
  std::size_t m_namesIndex = 0;  // of the section that holds the names; ELF alone
};

}  // namespace LTLib::detail

#endif  // LTLIB_COMPONENT_LIBRARY_IMAGE_H
