#include "ltreg/cli/output.h"

#include "ltreg/cli/failure.h"

namespace ltreg {

void Output::line(std::string_view text) {
  bytes(text);
  bytes(std::string_view(&m_end, 1));
}

// A later write that goes well must not hide one that failed, as on a disk that was full for a moment.
void Output::bytes(std::string_view all) {
  m_failed = m_failed || m_stream == nullptr ||
             std::fwrite(all.data(), 1, all.size(), m_stream) != all.size();
}

void Output::finish() {
  m_failed = m_failed || (m_stream != nullptr && std::fflush(m_stream) != 0);
  if (m_failed) {
    throw Failure(ExitCode::kStoreFailed,
                  "standard output cannot be written (is it closed, or its disk full?)");
  }
}

}  // namespace ltreg
