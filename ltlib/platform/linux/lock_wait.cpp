#include "ltlib/platform/lock_wait.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "ltlib/platform/linux/lock_file.h"
#include "ltlib/platform/process.h"

namespace LTLib::Platform {
namespace {

// The file as the kernel's list of locks names it: "fe:00:1234".
std::string placeInList(const struct stat& file) {
  char text[64];
  std::snprintf(text, sizeof text, "%02x:%02x:%llu", major(file.st_dev), minor(file.st_dev),
                static_cast<unsigned long long>(file.st_ino));
  return text;
}

std::optional<LockHolder> holderOf(const std::string& path) {
  struct stat file {};
  if (::lstat(path.c_str(), &file) != 0) {
    return std::nullopt;
  }
  const std::string wanted = placeInList(file);
  std::ifstream list("/proc/locks");
  for (std::string line; std::getline(list, line);) {
    std::istringstream words(line);
    std::string number, kind, strength, access, place;
    std::uint32_t process = 0;
    // A line with an arrow behind its number is of one who waits.
    if (words >> number >> kind >> strength >> access >> process >> place && kind == "FLOCK" &&
        place == wanted && process != processId()) {
      LockHolder holder{process, {}};
      std::ifstream name("/proc/" + std::to_string(process) + "/comm");
      std::getline(name, holder.program);
      return holder;
    }
  }
  return std::nullopt;
}

}  // namespace

std::string namedLockPlace(const std::string& name) {
  return lockFilePath(name);
}

std::optional<LockHolder> holderOfNamedLock(const std::string& name) {
  return holderOf(lockFilePath(name));
}

std::optional<LockHolder> holderOfFileLock(const std::string& path) {
  return holderOf(path);
}

}  // namespace LTLib::Platform
