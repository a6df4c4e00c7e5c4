/// \file
/// \brief A string of plain bytes with a few replacement and number helpers.
///
/// Threads: one thread at a time.
///
/// Failure: the standard library's exceptions; the string is unchanged then.
#ifndef LTLIB_FOUNDATION_LT_STRING_H
#define LTLIB_FOUNDATION_LT_STRING_H

#include <cstddef>
#include <string>
#include <utility>

#include "ltlib/export.h"

/// The string; any bytes, zero bytes included.
class LTLIB_EXPORT LTString {
 public:
  LTString() = default;
  explicit(false) LTString(std::string text) : m_text(std::move(text)) {}
  /// Up to the terminator; null counts as empty.
  explicit(false) LTString(const char* text) : m_text(text != nullptr ? text : "") {}

  /// Turns every `from` into `to`, zero bytes included.
  void replace(char from, char to);

  /// Puts `with` in the place of every `find`, from left to right, and does not look again at what
  /// it put in. An empty `find` or `with` changes nothing.
  void replace(const LTString& find, const LTString& with);

  /// At most `count` characters from `pos`. Throws std::out_of_range when `pos` lies behind the
  /// end.
  LTString substr(std::size_t pos, std::size_t count) const;

  /// Appends the number in decimal, whatever the locale.
  void AppendNumber(int value);

  /// Makes the string empty and keeps its storage.
  void erase() { m_text.clear(); }

  /// Both zero-terminated, and valid until the next change.
  const char* c_str() const { return m_text.c_str(); }
  const char* data() const { return m_text.data(); }

  const std::string& str() const { return m_text; }

  /// The number in decimal, with the separators of the process's global locale.
  static std::string intToString(long long value);

  bool operator==(const LTString&) const = default;

 private:
  std::string m_text;
};

#endif  // LTLIB_FOUNDATION_LT_STRING_H
