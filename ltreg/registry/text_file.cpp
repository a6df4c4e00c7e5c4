#include "ltreg/registry/text_file.h"

#include <cerrno>
#include <exception>
#include <fstream>
#include <system_error>
#include <vector>

#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

constexpr std::streamsize kBlock = 1 << 16;

[[noreturn]] void throwUnusable(ExitCode code, const std::string& file, const char* what) {
  throw Failure(code, "the file " + inQuotes(file) + " cannot be " + what + ": " +
                          std::generic_category().message(errno));
}

}  // namespace

// A narrow text of its own the standard library would take for one of another encoding.
std::filesystem::path fileOf(const std::string& text) {
  try {
    return std::u8string(text.begin(), text.end());
  } catch (const std::exception&) {
    return text;
  }
}

std::string textOf(const std::filesystem::path& file) {
  const std::u8string text = file.u8string();
  return {text.begin(), text.end()};
}

std::string readTextFile(const std::string& file) {
  std::ifstream in(fileOf(file), std::ios::binary);
  std::string bytes;
  // A pipe has no size, and is read to its end all the same.
  std::error_code none;
  if (const auto size = std::filesystem::file_size(fileOf(file), none); !none) {
    bytes.reserve(size);
  }
  std::vector<char> block(kBlock);
  while (in.read(block.data(), kBlock), in.gcount() > 0) {
    bytes.append(block.data(), static_cast<std::size_t>(in.gcount()));
  }
  if (!in.is_open() || in.bad()) {
    throwUnusable(ExitCode::kAbsent, file, "read");
  }
  return bytes;
}

void writeTextFile(const std::string& file, const std::string& bytes) {
  std::ofstream out(fileOf(file), std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out.flush()) {
    throwUnusable(ExitCode::kStoreFailed, file, "written");
  }
}

}  // namespace ltreg
