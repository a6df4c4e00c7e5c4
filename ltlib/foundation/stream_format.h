/// \file
/// \brief Keeps the formatting of a stream over a scope: fill, flags, precision and width.
///
/// Nothing else of the stream is saved.
///
/// Threads: one thread at a time, for the guard and the stream together.
///
/// Ownership: the stream is borrowed and has to outlive the guard.
///
/// Failure: none.
#ifndef LTLIB_FOUNDATION_STREAM_FORMAT_H
#define LTLIB_FOUNDATION_STREAM_FORMAT_H

#include <cstdint>
#include <ios>

#include "ltlib/export.h"

/// Holds the format of one stream and gives it back at its end.
class LTLIB_EXPORT qs_stream_fmt_sentry {
 public:
  /// A format by itself.
  struct qs_ios_fmt {
    char fill;
    std::uint32_t flags;
    std::int32_t precision;
    std::int32_t width;
  };

  /// Saves the stream's format.
  explicit qs_stream_fmt_sentry(std::basic_ios<char>& stream);

  /// Restores the format that is held, if one is.
  ~qs_stream_fmt_sentry();

  qs_stream_fmt_sentry(const qs_stream_fmt_sentry&) = delete;
  qs_stream_fmt_sentry& operator=(const qs_stream_fmt_sentry&) = delete;

  /// Holds the stream's present format in place of what was held.
  void Save();

  /// Gives the stream the format that is held, which is held no longer; without one it does
  /// nothing.
  void Restore();

  // The first argument is the destination.
  static void CopyFormat(std::basic_ios<char>& to, const qs_ios_fmt& from);
  static void CopyFormat(qs_ios_fmt& to, std::basic_ios<char>& from);

 private:
  bool m_saved;
  std::basic_ios<char>& m_stream;
  qs_ios_fmt m_fmt;
};

#endif  // LTLIB_FOUNDATION_STREAM_FORMAT_H
