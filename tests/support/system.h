// What tests ask of the two kinds of system, each of which has a source of its own.
#ifndef LTLIB_TESTS_SUPPORT_SYSTEM_H
#define LTLIB_TESTS_SUPPORT_SYSTEM_H

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace LTLib::Testing {

/// For the few tests that ask more than both can give.
inline constexpr bool kOnWindows = std::filesystem::path::preferred_separator == '\\';

/// Sets an environment variable of this process, or removes it with no value.
void setEnvironment(const std::string& name, const std::optional<std::string>& value);

/// The end to read from and the end to write to; no child gets them that is not given them.
[[nodiscard]] std::pair<std::FILE*, std::FILE*> makePipe();

/// What a program is started with. The streams become its standard ones, and this process closes
/// its own; with none for errors the program has those of this process.
struct Start {
  std::string program;
  std::vector<std::string> arguments;
  std::string folder;
  std::FILE* input;
  std::FILE* output;
  std::FILE* errors = nullptr;
};

/// A started program.
class Process {
 public:
  explicit Process(const Start& start);

  /// Kills a program that was not waited for.
  ~Process() {
    if (m_handle != 0) {
      kill();
      wait();
    }
  }
  Process(Process&& other) noexcept : m_handle(std::exchange(other.m_handle, 0)) {}

  /// Ends it as kill -9 does, unless it was waited for.
  void kill() const;

  /// Waits for the end and gives the exit code, negative when the program did not exit by itself.
  int wait();

 private:
  std::intptr_t m_handle = 0;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_SYSTEM_H
