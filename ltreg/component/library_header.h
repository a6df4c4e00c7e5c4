// What the first bytes of a library's file tell about it.
#ifndef LTREG_COMPONENT_LIBRARY_HEADER_H
#define LTREG_COMPONENT_LIBRARY_HEADER_H

#include <filesystem>
#include <string>

namespace ltreg {

enum class FileFormat { kUnreadable, kOther, kElf, kPe };

struct LibraryHeader {
  FileFormat format = FileFormat::kUnreadable;
  unsigned int bits = 0;     // 32 or 64
  unsigned int machine = 0;  // the format's own number
  bool bigEndian = false;
  bool isLibrary = false;  // an ELF file that can be loaded as one, or a PE file that is a DLL

  /// Whether a process of the one program can load the other, as far as processors go.
  [[nodiscard]] bool sameProcessor(const LibraryHeader& other) const;

  /// The format and the processor in words, as "ELF for x86-64".
  [[nodiscard]] std::string text() const;
};

/// Reads ELF and PE headers, whatever the system it runs on.
[[nodiscard]] LibraryHeader readLibraryHeader(const std::filesystem::path& pathname);

}  // namespace ltreg

#endif  // LTREG_COMPONENT_LIBRARY_HEADER_H
