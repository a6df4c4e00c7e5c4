// What a command line tool needs of its own process; no part of the shared library.
//
// Threads: both calls belong at the start of `main`, while there is one thread.
#ifndef LTLIB_PLATFORM_TOOL_PROCESS_H
#define LTLIB_PLATFORM_TOOL_PROCESS_H

#include <cstdio>
#include <string>

namespace LTLib::Platform {

/// Sets an environment variable of this process, in place of one of that name; std::getenv gives
/// it from then on, in every library of the process. False if the system refuses.
/// Requires: neither text is empty or holds a NUL, and `name` holds no '='.
[[nodiscard]] bool setEnvironmentVariable(const std::string& name,
                                          const std::string& value) noexcept;

/// Parts the tool's data from what its libraries print: from then on whatever is written to
/// standard output goes to standard error. Gives a stream to where standard output led before, in
/// the system's text mode, which the process keeps to its end; null if that is closed or the
/// system refuses. Standard streams that the caller had closed lead nowhere afterwards, so that no
/// file that is opened later is taken for one of them. Requires: nothing was written to standard
/// output yet.
[[nodiscard]] std::FILE* divertStandardOutput() noexcept;

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_TOOL_PROCESS_H
