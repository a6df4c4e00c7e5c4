/// \file
/// \brief Result codes and the one exception type: how everything in this library reports failure.
///
/// Threads: a codec is a plain value. An exception object is used by one thread at a time, since
/// `what` may store the text that it gives.
///
/// Ownership: an exception copies its message; the source file name is borrowed for the life of the
/// exception and of every copy of it, in practice a string literal.
///
/// Failure: only memory can run out; the standard library's exception then leaves the constructor,
/// or What.
#ifndef LTLIB_FOUNDATION_KQSRESULT_H
#define LTLIB_FOUNDATION_KQSRESULT_H

#include <cstdint>
#include <exception>
#include <ostream>
#include <string>

#include "ltlib/export.h"

/// A result code: negative is failure, zero and positive are success. The library's own codes
/// carry a marker in bit 18, a project in bits 15 to 11, a module in bits 9 and 8 and a code in
/// bits 7 to 0.
using QSResult = std::int32_t;

namespace LTLib {

/// Turns the unsigned notation in which failures are written into a QSResult.
constexpr QSResult resultFromBits(std::uint32_t bits) {
  return static_cast<QSResult>(bits);
}

inline constexpr QSResult kSuccess = 0;
/// One-time initialisation is done.
inline constexpr QSResult kInitialised = resultFromBits(0x00041000u);
/// The general failure, which is also that of every lock.
inline constexpr QSResult kFailure = resultFromBits(0x80004005u);
/// A required pointer is null.
inline constexpr QSResult kNullArgument = resultFromBits(0x8004102Eu);
/// The interface or class is not available.
inline constexpr QSResult kNotAvailable = resultFromBits(0x8004102Fu);
/// The item is already present.
inline constexpr QSResult kAlreadyPresent = resultFromBits(0x80360001u);
/// The item is not there.
inline constexpr QSResult kNotFound = resultFromBits(0x80360002u);

/// Maps the number of an operating system's call: 0 and less pass unchanged, a greater one gives
/// its low 16 bits or'ed with 0x80070000.
constexpr QSResult resultFromSystemError(int number) {
  return number > 0 ? resultFromBits((static_cast<std::uint32_t>(number) & 0xFFFFu) | 0x80070000u)
                    : number;
}

}  // namespace LTLib

/// Packs a result code from its fields and takes one apart. Holds one code, 0 at first.
class LTLIB_EXPORT QSResultCodec {
 public:
  QSResultCodec() = default;
  explicit QSResultCodec(QSResult value) : m_value(value) {}

  /// Stores and returns the code with the marker set. The fields are shifted and or'ed as they
  /// come: a project above 31, a module above 3 or a code above 255 spills into its neighbours,
  /// and of `error` only bit 0 counts.
  QSResult Encode(unsigned short error, unsigned short project, unsigned short module,
                  unsigned short code);

  /// Takes the stored code apart. With the marker set, writes all four and returns 0; without it,
  /// writes nothing and returns 0x80004005.
  QSResult Decode(unsigned short& error, unsigned short& project, unsigned short& module,
                  unsigned short& code) const;

  /// Whether the marker is set.
  bool IsQsResult() const;

  // The fields, whether or not the marker is set.
  unsigned short Error() const;
  unsigned short Project() const;
  unsigned short Module() const;
  unsigned short Code() const;

 private:
  QSResult m_value = 0;
};

/// The exception that the library throws: a result code, the place of the throw and a message.
/// Thrown by value and caught by reference. Each construction but a copy is traced as a warning,
/// and so is each destruction as a log line, those of copies included.
class LTLIB_EXPORT QSException : public std::exception {
 public:
  /// No message: the text is that of DoWhat. A null `file` counts as unknown.
  QSException(const char* file, int line, QSResult result);
  /// A null or empty `message` counts as none.
  QSException(const char* file, int line, QSResult result, const char* message);
  /// Takes the message out of the stream's buffer, whose characters are consumed by that. A
  /// buffer with nothing to read, as that of an output-only stream, gives no message.
  QSException(const char* file, int line, QSResult result, const std::ostream& message);
  /// No message, no file, line 0.
  explicit(false) QSException(const QSResult& result);
  /// No file, line 0; a null or empty `message` counts as none.
  QSException(const QSResult& result, const char* message);
  QSException(const QSException& other);
  QSException& operator=(const QSException& other);
  ~QSException() override;

  /// The message, or the text of DoWhat where there is none. Stores nothing, and lets through what
  /// DoWhat throws.
  std::string What() const;

  /// As What, but the text of DoWhat becomes the message; where DoWhat throws, the text is "Generic
  /// application exception" and none is kept. The pointer stays valid while the exception lives and
  /// is not assigned to.
  const char* what() const noexcept override;

  /// The code given at construction.
  QSResult Result() const { return m_origin.result; }
  /// The file given at construction, "No specific file info" where there is none.
  const char* File() const;
  /// The line given at construction, 0 where there is none.
  int Line() const { return m_origin.line; }

 protected:
  /// The text of an exception without a message; a derived class may have its own. Should not
  /// throw: whoever asks for the text is handling a failure already.
  virtual std::string DoWhat() const;

 private:
  struct Origin {
    QSResult result = 0;
    const char* file = nullptr;
    std::int32_t line = 0;
  };

  Origin m_origin;
  mutable std::string m_message;
};

#endif  // LTLIB_FOUNDATION_KQSRESULT_H
