#include "ltreg/exchange/document.h"

#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"

namespace ltreg {

void throwBadLine(const std::string& file, std::size_t line, const std::string& what) {
  throw Failure(ExitCode::kBadInput, escapeControls(file) + ':' + std::to_string(line) + ": " +
                                         what + "; nothing was changed");
}

}  // namespace ltreg
