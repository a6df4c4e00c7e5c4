#include "ltlib/platform/terminal.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <new>

namespace LTLib::Platform {
namespace {

// A console takes no more in one call, on systems that are still about.
constexpr std::size_t kMostCharacters = 8000;

HANDLE s_pager = nullptr;
std::FILE* s_pagerInput = nullptr;

HANDLE handleOf(std::FILE* stream) {
  return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

bool isHighHalf(wchar_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

std::wstring wideOf(std::string_view text) {
  const auto size = static_cast<int>(text.size());
  std::wstring wide(text.size(), L'\0');
  wide.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size)));
  return wide;
}

// A program that reads text for the console takes it to be in the console's code page.
std::string inConsolesCodePage(std::string_view text) {
  const std::wstring wide = wideOf(text);
  const auto size = static_cast<int>(wide.size());
  const UINT page = GetConsoleOutputCP();
  std::string narrow(4 * wide.size(), '\0');
  narrow.resize(static_cast<std::size_t>(
      WideCharToMultiByte(page, 0, wide.data(), size, narrow.data(),
                          static_cast<int>(narrow.size()), nullptr, nullptr)));
  return narrow;
}

bool writeBytes(std::FILE* stream, std::string_view bytes) {
  return std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
}

bool writeToConsole(HANDLE console, std::string_view text) {
  const std::wstring wide = wideOf(text);
  for (std::size_t at = 0; at < wide.size();) {
    std::size_t size = std::min(wide.size() - at, kMostCharacters);
    size -= at + size < wide.size() && isHighHalf(wide[at + size - 1]) ? 1 : 0;
    DWORD written = 0;
    if (WriteConsoleW(console, wide.data() + at, static_cast<DWORD>(size), &written, nullptr) ==
            0 ||
        written == 0) {
      return false;
    }
    at += written;
  }
  return true;
}

// The end of a pipe that a child reads, and the stream that writes into it.
std::FILE* makePipe(HANDLE& end) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  HANDLE input = nullptr;
  if (CreatePipe(&end, &input, &inherited, 0) == 0) {
    return nullptr;
  }
  SetHandleInformation(input, HANDLE_FLAG_INHERIT, 0);
  return _fdopen(_open_osfhandle(reinterpret_cast<std::intptr_t>(input), _O_TEXT), "w");
}

bool spawnPager(const std::string& command, HANDLE input, HANDLE screen) {
  std::string line = "cmd.exe /c " + command;
  STARTUPINFOA start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = input;
  start.hStdOutput = screen;
  start.hStdError = screen;
  SetHandleInformation(screen, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  PROCESS_INFORMATION made{};
  if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                     &made) == 0) {
    return false;
  }
  CloseHandle(made.hThread);
  s_pager = made.hProcess;
  return true;
}

}  // namespace

const char* const kUsualPager = "more";

bool isTerminal(std::FILE* stream) noexcept {
  DWORD mode = 0;
  return stream != nullptr && GetConsoleMode(handleOf(stream), &mode) != 0;
}

bool takesEscapes(std::FILE* stream) noexcept {
  constexpr DWORD kEscapeSequences = 4;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING
  DWORD mode = 0;
  return stream != nullptr && GetConsoleMode(handleOf(stream), &mode) != 0 &&
         SetConsoleMode(handleOf(stream), mode | kEscapeSequences) != 0;
}

bool writeText(std::FILE* stream, std::string_view text) noexcept try {
  if (stream == s_pagerInput) {
    return writeBytes(stream, inConsolesCodePage(text));
  }
  if (!isTerminal(stream)) {
    return writeBytes(stream, text);
  }
  return std::fflush(stream) == 0 && writeToConsole(handleOf(stream), text);
} catch (const std::bad_alloc&) {
  return false;
}

std::FILE* startPager(const std::string& command, std::FILE* screen) noexcept {
  HANDLE end = nullptr;
  std::FILE* input = makePipe(end);
  if (input != nullptr && !spawnPager(command, end, handleOf(screen))) {
    std::fclose(input);
    input = nullptr;
  }
  if (input != nullptr) {
    SetConsoleCtrlHandler(nullptr, TRUE);
  }
  CloseHandle(end);
  s_pagerInput = input;
  return input;
}

void endPager(std::FILE* input) noexcept {
  s_pagerInput = nullptr;
  std::fclose(input);
  WaitForSingleObject(s_pager, INFINITE);
  CloseHandle(s_pager);
}

}  // namespace LTLib::Platform
