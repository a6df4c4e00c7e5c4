// Diagnostic lines for developers: the two entry points that the base library writes to, and the
// handler by which a program takes the lines.
//
// Threads: all functions may be called from any thread at any time.
// Ownership: every argument of the entry points is borrowed for the length of the call.
// Failure: none shows; a line that cannot be written is dropped.
//
// Silent by default. The environment variable LTTRACER, read once at the first line that no handler
// takes, sends lines to standard error: "warning" lets the warnings through, a number N the warnings
// and every log line whose detail is N or less.
#ifndef LTTRACER_TRACER_H
#define LTTRACER_TRACER_H

#include <climits>
#include <ostream>
#include <string>

#if defined(_WIN32) && defined(LTTRACER_BUILDING)
#define LTTRACER_EXPORT __declspec(dllexport)
#elif defined(_WIN32)
#define LTTRACER_EXPORT
#else
#define LTTRACER_EXPORT __attribute__((visibility("default")))
#endif

namespace Tracer {

/// How much a reader must want to know before a line is shown; greater is finer.
enum LogDetail : int {
  kDetailNone = -1,
  kDetailWarning = 0,  // that of every warning, and of no log line
  kDetailLifecycle = 2,
  kDetailEnvironment = 4,
  kDetailAll = INT_MAX,
};

/// A line as a handler gets it; all of it is borrowed for the length of the call.
struct Line {
  LogDetail detail;
  const std::string& text;  // without a line end; it may hold any byte
  const char* file;         // the source file without its extension, and the line there
  long line;
  const char* tag;  // the area of the source, with a colon at the end
  const char* function;
};

/// Takes lines in place of standard error.
struct Handler {
  /// Called on the thread that writes the line, by several threads at once. An exception drops the
  /// line and goes no further. Lines that the handler itself causes on its thread are dropped.
  void (*take)(const Line& line, void* context);
  void* context;         // handed to `take`
  LogDetail mostDetail;  // finer lines are not handed over, and cost as little as without a handler
};

/// Has `handler` take all lines that begin from now on, whatever LTTRACER says, and gives the one that
/// took them so far. Null, as it is at first, stands for standard error and what LTTRACER lets through.
///
/// A handler is borrowed and not to be changed. Nobody waits: a line that another thread has begun may
/// come to the former handler after the return, so that what that refers to, and the library that it
/// lies in, has to stay for as long as other threads may trace; static objects do.
LTTRACER_EXPORT const Handler* setHandler(const Handler* handler) noexcept;

namespace _internal_ {

/// Hands over a warning. `message` is a stream whose buffer holds the finished text and can be
/// read; `file` names the source file without its extension, `tag` its area with a colon at the
/// end, `function` the caller.
LTTRACER_EXPORT void Warning(const std::basic_ostream<char>& message, const char* file, long line,
                             const char* tag, const char* function);

/// Hands over a log line of the given detail; the other arguments are those of Warning.
LTTRACER_EXPORT void Log(Tracer::LogDetail detail, const std::basic_ostream<char>& message,
                         const char* file, long line, const char* tag, const char* function);

}  // namespace _internal_
}  // namespace Tracer

#endif  // LTTRACER_TRACER_H
