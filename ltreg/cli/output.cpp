#include "ltreg/cli/output.h"

#include "ltreg/cli/failure.h"

namespace ltreg {

// A later write that goes well must not hide one that failed, as on a disk that was full for a moment.
void Output::line(std::string_view text) {
  m_failed = m_failed || m_stream == nullptr ||
             std::fwrite(text.data(), 1, text.size(), m_stream) != text.size() ||
             std::fputc(m_end, m_stream) == EOF;
}

void Output::finish() {
  m_failed = m_failed || (m_stream != nullptr && std::fflush(m_stream) != 0);
  if (m_failed) {
    throw Failure(ExitCode::kStoreFailed,
                  "standard output cannot be written (is it closed, or its disk full?)");
  }
}

}  // namespace ltreg
