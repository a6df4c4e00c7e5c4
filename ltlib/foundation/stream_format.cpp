#include "ltlib/foundation/stream_format.h"

qs_stream_fmt_sentry::qs_stream_fmt_sentry(std::basic_ios<char>& stream)
    : m_saved(true), m_stream(stream), m_fmt() {
  CopyFormat(m_fmt, m_stream);
}

qs_stream_fmt_sentry::~qs_stream_fmt_sentry() {
  Restore();
}

void qs_stream_fmt_sentry::Save() {
  CopyFormat(m_fmt, m_stream);
  m_saved = true;
}

void qs_stream_fmt_sentry::Restore() {
  if (m_saved) {
    CopyFormat(m_stream, m_fmt);
    // Restored once only: what the program sets later is its own wish.
    m_saved = false;
  }
}

void qs_stream_fmt_sentry::CopyFormat(std::basic_ios<char>& to, const qs_ios_fmt& from) {
  to.fill(from.fill);
  to.flags(static_cast<std::ios_base::fmtflags>(from.flags));
  to.precision(from.precision);
  to.width(from.width);
}

void qs_stream_fmt_sentry::CopyFormat(qs_ios_fmt& to, std::basic_ios<char>& from) {
  to.fill = from.fill();
  to.flags = static_cast<std::uint32_t>(from.flags());
  to.precision = static_cast<std::int32_t>(from.precision());
  to.width = static_cast<std::int32_t>(from.width());
}
