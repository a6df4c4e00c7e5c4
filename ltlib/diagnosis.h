/// \file
/// \brief Results and exceptions in words, for logs and for people.
///
///   catch (const QSException& error) {
///     std::cerr << error << '\n';                     // and std::format("{}", error)
///     // failed (0x80004005): registry file cannot be read [kFileRegistry:71]
///   }
///
/// Threads: as QSException.
///
/// Failure: memory can run out, and what DoWhat throws passes through.
#ifndef LTLIB_DIAGNOSIS_H
#define LTLIB_DIAGNOSIS_H

#include <concepts>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <version>

// Whether this is there depends on the standard library alone.
#ifdef __cpp_lib_format
#include <format>
#endif

#include "ltlib/foundation/kqsresult.h"

namespace LTLib {

/// The eight digits in which results are written down, as "0x80004005".
[[nodiscard]] inline std::string resultDigits(QSResult result) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string text = "0x";
  for (int shift = 28; shift >= 0; shift -= 4) {
    text += kDigits[(static_cast<std::uint32_t>(result) >> shift) & 0xFu];
  }
  return text;
}

namespace detail {

[[nodiscard]] constexpr const char* meaningOf(QSResult result) {
  switch (result) {
    case kInitialised:
      return "initialised";
    case kNullArgument:
      return "a required pointer is null";
    case kNotAvailable:
      return "not available";
    case kAlreadyPresent:
      return "already present";
    case kNotFound:
      return "not found";
    default:
      return result < 0 ? "failed" : "succeeded";
  }
}

}  // namespace detail

/// A result in words, as "not available (0x8004102F)" or "system error 5 (0x80070005)".
[[nodiscard]] inline std::string describe(QSResult result) {
  const int number = result & 0xFFFF;
  return (result == resultFromSystemError(number) && number != 0
              ? "system error " + std::to_string(number)
              : detail::meaningOf(result))
      .append(" (")
      .append(resultDigits(result))
      .append(")");
}

/// An exception in a line: its result in words, its text, and the place of the throw if it has one.
[[nodiscard]] inline std::string describe(const QSException& exception) {
  std::string line = describe(exception.Result()) + ": " + exception.What();
  if (exception.Line() != 0) {
    line.append(" [").append(exception.File()).append(":");
    line.append(std::to_string(exception.Line())).append("]");
  }
  return line;
}

}  // namespace LTLib

/// As LTLib::describe. A template, since results turn into exceptions by themselves.
template <std::derived_from<QSException> Exception>
std::ostream& operator<<(std::ostream& stream, const Exception& exception) {
  return stream << LTLib::describe(exception);
}

#ifdef __cpp_lib_format
/// As LTLib::describe; laid out as a text is.
template <std::derived_from<QSException> Exception>
struct std::formatter<Exception> : std::formatter<std::string_view> {
  template <class Context>
  auto format(const Exception& exception, Context& context) const {
    return std::formatter<std::string_view>::format(LTLib::describe(exception), context);
  }
};
#endif

#endif  // LTLIB_DIAGNOSIS_H
