/// \file
/// \brief 128-bit identifiers: generated, printed, parsed, compared, and as 16 bytes.
///
/// Threads: Generate may be called from any thread at any time; the rest touches its object only.
///
/// Forks: the child seeds anew and generates values unlike its parent's.
///
/// Ownership: a plain value; buffers stay the caller's.
///
/// Units: sizes are in bytes, the terminating zero counted.
///
/// The text form is "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx" in lower-case hexadecimal: 36 characters
/// and a terminating zero. It looks like a GUID, but no version or variant bits are forced: a
/// generated value mixes random words, time, process and a counter. It is unlike any other, and it
/// is no secret: values can be guessed from others.
#ifndef LTLIB_FOUNDATION_UID_H
#define LTLIB_FOUNDATION_UID_H

#include <cstdint>
#include <string>

#include "ltlib/export.h"

/// An identifier.
class LTLIB_EXPORT UID {
 public:
  /// All zero.
  UID() = default;

  /// The value of a text form; all zero when the text does not parse, for which see fromString.
  /// Requires: `text` is not null.
  explicit UID(const char* text);

  /// Takes the value of a text form and gives true; when the text does not parse, becomes all zero
  /// and gives false. Digits of either case, fields with fewer digits as long as the separator
  /// follows, white space ahead of a field and anything behind the last field are accepted.
  bool fromString(const std::string& text);

  /// Writes the text form into a buffer of `size` bytes and gives 37, the bytes it takes. A null
  /// buffer gives 37, the size needed; a size below 37 gives -1; neither writes anything.
  int toString(char* buffer, int size) const;

  /// Writes the 16 bytes, in the order of the digits of the text form. A null `out` does nothing.
  void to16bytes(unsigned char* out) const;

  /// Takes the value of 16 such bytes. A null `in` leaves the object unchanged.
  void from16bytes(const unsigned char* in);

  /// Gives -1, 0 or 1 for less, equal or greater. The order is that of the four words' bytes with
  /// the least significant byte of each word first; it is not the order of the texts.
  int Compare(const UID& other) const;

  /// A new value. The first call in a process may throw what the trace of its seeding throws, and
  /// the next then tries again; a random device that fails is no failure.
  static UID Generate();

 private:
  std::uint32_t m_words[4] = {};
};

#endif  // LTLIB_FOUNDATION_UID_H
