// Where a person reads the tool's data, if one does.
#ifndef LTREG_CLI_SCREEN_H
#define LTREG_CLI_SCREEN_H

#include <cstdio>

#include "ltreg/cli/output.h"
#include "ltreg/cli/request.h"

namespace ltreg {

/// Decides for whom data is written, and holds the pager that was asked for until its end.
class Screen {
 public:
  /// `data` stays the caller's. Throws Failure where no pager starts.
  Screen(const Request& request, std::FILE* data);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  [[nodiscard]] std::FILE* stream() const { return m_pager != nullptr ? m_pager : m_data; }
  [[nodiscard]] const Look& look() const { return m_look; }

 private:
  std::FILE* m_data;
  std::FILE* m_pager = nullptr;
  Look m_look;
};

}  // namespace ltreg

#endif  // LTREG_CLI_SCREEN_H
