#include "ltreg/cli/output.h"

#include <nlohmann/json.hpp>

#include "ltreg/cli/failure.h"

namespace ltreg {

void Output::line(std::string_view text) {
  m_failed = m_failed || m_stream == nullptr ||
             std::fwrite(text.data(), 1, text.size(), m_stream) != text.size() ||
             std::fputc('\n', m_stream) == EOF;
}

void Output::json(const nlohmann::ordered_json& value) {
  line(value.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

void Output::finish() {
  m_failed = m_failed || (m_stream != nullptr && std::fflush(m_stream) != 0);
  if (m_failed) {
    throw Failure(ExitCode::kStoreFailed,
                  "standard output cannot be written (is it closed, or its disk full?)");
  }
}

}  // namespace ltreg
