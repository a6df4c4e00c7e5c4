// Terminals as a command line tool meets them; no part of the shared library.
//
// Threads: each stream belongs to one thread at a time.
#ifndef LTLIB_PLATFORM_TERMINAL_H
#define LTLIB_PLATFORM_TERMINAL_H

#include <cstdio>
#include <string>
#include <string_view>

namespace LTLib::Platform {

/// Whether a person looks at what the stream writes. A null stream is none.
[[nodiscard]] bool isTerminal(std::FILE* stream) noexcept;

/// Has a terminal obey the escape sequences for colours and the like. False where it knows none.
[[nodiscard]] bool takesEscapes(std::FILE* stream) noexcept;

/// Writes UTF-8, which a console shows whatever its code page is. False if any of it got lost.
/// Requires: the stream is not null.
bool writeText(std::FILE* stream, std::string_view text) noexcept;

/// Starts the command of the system's shell that shows its input page by page where `screen` leads.
/// Gives the stream of its input; null if the system refuses. An interrupt from the keyboard is the
/// pager's from then on.
[[nodiscard]] std::FILE* startPager(const std::string& command, std::FILE* screen) noexcept;

/// Closes the input of the pager that runs and waits for its end. Requires: there is one.
void endPager(std::FILE* input) noexcept;

/// The command where the user names none.
extern const char* const kUsualPager;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_TERMINAL_H
