#include "ltlib/foundation/kqsresult.h"

#include <sstream>

#include "lttracer/tracer.h"

namespace {

constexpr std::uint32_t kMarker = 0x40000;

constexpr char kSource[] = "kqsresult";
constexpr char kTag[] = "QSRESULT:";
constexpr char kUnknownFile[] = "No specific file info";
constexpr char kNoMessage[] = "No specific error message";
constexpr char kGeneric[] = "Generic application exception";

std::uint32_t bitsOf(QSResult value) {
  return static_cast<std::uint32_t>(value);
}

// Goes through a second stream: inserting an empty buffer would set failbit on the target.
std::string textOf(const std::ostream& source) {
  std::stringstream text;
  if (source.rdbuf() != nullptr) {
    text << source.rdbuf();
  }
  return text.str();
}

std::string textOrEmpty(const char* text) {
  return text != nullptr ? text : "";
}

void traceConstruction(const std::string& opening, const char* file, int line) {
  std::stringstream text;
  Tracer::_internal_::Warning(text << opening << file << ':' << line, kSource, __LINE__, kTag,
                              "QSException");
}

}  // namespace

// Nothing is masked: callers rely on what a field that is too large does to its neighbours.
QSResult QSResultCodec::Encode(unsigned short error, unsigned short project, unsigned short module,
                               unsigned short code) {
  const std::uint32_t bits = (std::uint32_t{error} << 31) | (std::uint32_t{project} << 11) |
                             (std::uint32_t{module} << 8) | std::uint32_t{code} | kMarker;
  m_value = LTLib::resultFromBits(bits);
  return m_value;
}

QSResult QSResultCodec::Decode(unsigned short& error, unsigned short& project,
                               unsigned short& module, unsigned short& code) const {
  if (!IsQsResult()) {
    return LTLib::kFailure;
  }
  error = Error();
  project = Project();
  module = Module();
  code = Code();
  return LTLib::kSuccess;
}

bool QSResultCodec::IsQsResult() const {
  return (bitsOf(m_value) & kMarker) != 0;
}

unsigned short QSResultCodec::Error() const {
  return static_cast<unsigned short>(bitsOf(m_value) >> 31);
}

unsigned short QSResultCodec::Project() const {
  // The lower half alone: above the five bits lies the marker.
  return static_cast<unsigned short>((bitsOf(m_value) & 0xFFFFu) >> 11);
}

unsigned short QSResultCodec::Module() const {
  return static_cast<unsigned short>((bitsOf(m_value) >> 8) & 3u);
}

unsigned short QSResultCodec::Code() const {
  return static_cast<unsigned short>(bitsOf(m_value) & 0xFFu);
}

QSException::QSException(const char* file, int line, QSResult result)
    : m_origin{result, file, line} {
  traceConstruction("QSLT: QSException constructed at ", File(), line);
}

QSException::QSException(const char* file, int line, QSResult result, const char* message)
    : m_origin{result, file, line}, m_message(textOrEmpty(message)) {
  // A null message is named in the trace alone, so that the exception still counts as having none.
  const std::string shown = message != nullptr ? m_message : kNoMessage;
  traceConstruction("QSException '" + shown + "' constructed at : ", File(), line);
}

QSException::QSException(const char* file, int line, QSResult result, const std::ostream& message)
    : m_origin{result, file, line}, m_message(textOf(message)) {
  const std::string shown = m_message.empty() ? kNoMessage : m_message;
  traceConstruction("QSException '" + shown + "' constructed at : ", File(), line);
}

QSException::QSException(const QSResult& result) : m_origin{result, nullptr, 0} {
  traceConstruction("QSException from QSResult : constructed at : ", File(), Line());
}

QSException::QSException(const QSResult& result, const char* message)
    : m_origin{result, nullptr, 0}, m_message(textOrEmpty(message)) {
  traceConstruction("QSException '" + m_message + "' from QSResult : constructed at : ", File(),
                    Line());
}

// No move beside it: that would leave an exception without its message behind, which its destructor
// and whoever still holds it would not expect.
QSException::QSException(const QSException& other)
    : std::exception(), m_origin(other.m_origin), m_message(other.m_message) {}

QSException& QSException::operator=(const QSException& other) {
  if (this != &other) {
    m_origin = other.m_origin;
    m_message = other.m_message;
  }
  return *this;
}

// A trace that finds no memory, as an exception for want of it may well do, must not end the process.
QSException::~QSException() {
  try {
    std::stringstream text;
    Tracer::_internal_::Log(Tracer::kDetailLifecycle, text << "QSException destructed", kSource,
                            __LINE__, kTag, "~QSException");
  } catch (...) {
    return;
  }
}

std::string QSException::What() const {
  return m_message.empty() ? DoWhat() : m_message;
}

const char* QSException::what() const noexcept {
  // Kept, so that the pointer stays valid for as long as the exception lives.
  if (m_message.empty()) {
    try {
      m_message = DoWhat();
    } catch (...) {
      return kGeneric;
    }
  }
  return m_message.c_str();
}

const char* QSException::File() const {
  return m_origin.file != nullptr ? m_origin.file : kUnknownFile;
}

std::string QSException::DoWhat() const {
  std::stringstream text;
  text << kGeneric << ":"
       << " On file: " << File() << ":" << Line();
  return text.str();
}
