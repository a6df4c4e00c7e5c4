// What a command line tool needs of its own process and of a child; no part of the shared library.
//
// Threads: the calls belong into a program's one thread, those that change the process at the start
// of `main`.
#ifndef LTLIB_PLATFORM_TOOL_PROCESS_H
#define LTLIB_PLATFORM_TOOL_PROCESS_H

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

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

/// What to add to the rights that a key of the operating system's registry is opened for, so that it
/// lies in the part of programs of so many bits, 32 or 64; 0 on a system whose registry is one.
[[nodiscard]] int registryViewAccess(int bits) noexcept;

/// The file of the running program; empty if the system does not tell.
[[nodiscard]] std::string programPath();

/// Has the system end this process when the time is up, whatever it then does or waits for.
/// Requires: at least a second, and a day at most.
void limitLifetime(std::chrono::seconds limit) noexcept;

enum class ChildEnd {
  kNotStarted,  // the system refused, or the child could not be watched
  kExited,      // by itself
  kCrashed,     // the system ended it
  kTimedOut,    // it was ended, since its time was up
};

struct ChildOutcome {
  ChildEnd end = ChildEnd::kNotStarted;
  long code = 0;       // exit code; number of the signal or exception; the system's error
  std::string reason;  // of a crash or a failed start, in the system's words; else empty
  std::string output;  // what the child wrote to standard output, up to 1 MiB
};

/// Runs a program with this process's environment, folder and standard error, and with nothing on
/// its standard input, until it has ended or the time is up. If this process ends before that, in
/// whatever way, the system ends the child. Of processes that the child leaves behind nobody is
/// waited for and nobody ended. Throws std::bad_alloc alone.
[[nodiscard]] ChildOutcome runChild(const std::string& program,
                                    const std::vector<std::string>& arguments,
                                    std::chrono::milliseconds limit);

}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_TOOL_PROCESS_H
