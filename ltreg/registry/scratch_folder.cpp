#include "ltreg/registry/scratch_folder.h"

#include <random>
#include <system_error>

#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

// One for all scratch folders, since the system keeps a small file for each name of a lock for ever.
constexpr char kIdentity[] = "qs_config_ltreg_scratch";
constexpr int kMostTries = 100;

std::string randomName() {
  std::random_device random;
  return "ltreg-" + std::to_string(random()) + '-' + std::to_string(random());
}

}  // namespace

ScratchFolder::ScratchFolder() {
  std::error_code error;
  const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
  for (int i = 0; m_path.empty() && !error && i < kMostTries; ++i) {
    std::filesystem::path path = parent / randomName();
    // Makes it or finds it there, and what is there is somebody else's.
    if (std::filesystem::create_directory(path, error)) {
      m_path = std::move(path);
    }
  }
  if (m_path.empty()) {
    throw Failure(ExitCode::kStoreFailed, "no folder can be made below " +
                                              inQuotes(textOf(parent)) + ": " + error.message());
  }
  std::filesystem::permissions(m_path, std::filesystem::perms::owner_all, error);
  writeTextFile(file("qsconfig.dat"), kIdentity);
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::string ScratchFolder::file(const char* name) const {
  return textOf(m_path / name);
}

}  // namespace ltreg
