/// \file
/// \brief What the file of a library tells without being loaded: format and processor, and the
/// component classes that LTLIB_COMPONENT has left in it.
///
/// ELF and PE files of 32 and 64 bits are read on every system. Nothing in them is run, mapped or
/// trusted: what is broken, cut off or out of bounds is told as such.
///
/// A pathname is UTF-8 where the system has code pages, and elsewhere any bytes.
///
/// Threads: may be called from any thread at any time.
///
/// Failure: as the results tell; memory alone can run out.
#ifndef LTLIB_COMPONENT_LIBRARY_FILE_H
#define LTLIB_COMPONENT_LIBRARY_FILE_H

#include <string>
#include <vector>

#include "ltlib/export.h"

namespace LTLib {

/// What a file is by its first bytes; what cannot be opened and what is no regular file is unreadable.
enum class LibraryFormat { kUnreadable, kOther, kElf, kPe };

struct LibraryHeader {
  LibraryFormat format = LibraryFormat::kUnreadable;
  unsigned int bits = 0;     ///< 32 or 64
  unsigned int machine = 0;  ///< the format's own number
  bool bigEndian = false;
  bool isLibrary = false;  ///< an ELF file that can be loaded as one, or a PE file that is a DLL

  /// Whether a process of the one program can load the other, as far as processors go.
  [[nodiscard]] LTLIB_EXPORT bool sameProcessor(const LibraryHeader& other) const;

  /// The format and the processor in words, as "ELF for x86-64".
  [[nodiscard]] LTLIB_EXPORT std::string text() const;
};

[[nodiscard]] LTLIB_EXPORT LibraryHeader readLibraryHeader(const std::string& library);

/// A class that a library offers. All texts are as the file has them.
struct ComponentOffer {
  std::string id;
  std::vector<std::string>
      interfaces;     ///< identifiers with their versions, in the class's own order
  std::string words;  ///< what it is for; may be empty

  bool operator==(const ComponentOffer&) const = default;
};

struct LibraryOffers {
  std::vector<ComponentOffer> classes;  ///< by their identifiers, in the order of bytes
  std::string failure;  ///< why there is none, with "it" for the file; empty where there are some
};

/// The classes that a library offers by LTLIB_COMPONENT. Those of other registrations, which only the
/// library's code knows, are not among them.
[[nodiscard]] LTLIB_EXPORT LibraryOffers libraryOffers(const std::string& library);

}  // namespace LTLib

#endif  // LTLIB_COMPONENT_LIBRARY_FILE_H
