// The system's words for its error numbers.
#ifndef LTLIB_PLATFORM_WIN32_SYSTEM_WORDS_H
#define LTLIB_PLATFORM_WIN32_SYSTEM_WORDS_H

#include <windows.h>

#include <string>

namespace LTLib::Platform {

/// In one line and without a blank at its end; the number itself if the system has no words.
[[nodiscard]] inline std::string systemWords(DWORD error) {
  char words[512];
  const DWORD length = FormatMessageA(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
      nullptr, error, 0, words, sizeof words, nullptr);
  std::string text(words, length);
  text.erase(text.find_last_not_of(' ') + 1);
  return text.empty() ? "error " + std::to_string(error) : text;
}

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_WIN32_SYSTEM_WORDS_H
