// Diagnostic lines for developers: the two entry points that the base library writes to.
//
// Threads: both functions may be called from any thread at any time.
// Ownership: every argument is borrowed for the length of the call.
// Failure: none shows; a line that cannot be written is dropped.
//
// Silent by default. The environment variable LTTRACER, read once at the first call, sends lines
// to standard error: "warning" lets the warnings through, a number N the warnings and every log
// line whose detail is N or less.
#ifndef LTTRACER_TRACER_H
#define LTTRACER_TRACER_H

#include <ostream>

#if defined(_WIN32) && defined(LTTRACER_BUILDING)
#define LTTRACER_EXPORT __declspec(dllexport)
#elif defined(_WIN32)
#define LTTRACER_EXPORT
#else
#define LTTRACER_EXPORT __attribute__((visibility("default")))
#endif

namespace Tracer {

/// How much a reader must want to know before a log line is shown; greater is finer.
enum LogDetail : int {
  kDetailLifecycle = 2,
  kDetailEnvironment = 4,
};

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
