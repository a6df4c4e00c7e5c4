#include "ltreg/cli/screen.h"

#include <cstdlib>
#include <string>
#include <string_view>

#include "ltlib/platform/terminal.h"
#include "ltreg/cli/failure.h"

namespace ltreg {
namespace {

using namespace LTLib;

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool wantsColours(const Request& request, std::FILE* data) {
  const std::string wanted = request.colour.value_or("auto");
  const char* terminal = std::getenv("TERM");
  const bool isDumb = terminal != nullptr && std::string_view(terminal) == "dumb";
  return wanted == "always" ||
         (wanted == "auto" && !isSet("NO_COLOR") && !isDumb && Platform::takesEscapes(data));
}

}  // namespace

Screen::Screen(const Request& request, std::FILE* data) : m_data(data) {
  const bool isSeen = Platform::isTerminal(data);
  m_look.columns = isSeen && !request.null;
  m_look.colours = wantsColours(request, data);
  if (request.pager && isSeen) {
    const std::string command = isSet("PAGER") ? std::getenv("PAGER") : Platform::kUsualPager;
    m_pager = Platform::startPager(command, data);
    if (m_pager == nullptr) {
      throw Failure(ExitCode::kStoreFailed, "no pager starts; leave --pager out");
    }
  }
}

Screen::~Screen() {
  if (m_pager != nullptr) {
    Platform::endPager(m_pager);
  }
}

}  // namespace ltreg
