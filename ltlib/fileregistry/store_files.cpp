#include "ltlib/fileregistry/store_files.h"

#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>

#include "ltlib/fileregistry/tree_state.h"
#include "ltlib/foundation/uid.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {
namespace {

using Platform::FileResult;

constexpr char kIdentityFile[] = "qsconfig.dat";
constexpr char kNamePrefix[] = "qs_config_";
constexpr char kNameOfEmptyFile[] = "qs_config";

std::string identityPathname(const std::string& pathname) {
  const std::size_t end = pathname.rfind(Platform::directorySeparator());
  return (end != std::string::npos ? pathname.substr(0, end + 1) : std::string()) + kIdentityFile;
}

bool writeWhole(Platform::File& file, const std::string& text) {
  return Platform::fileCalls().write(file, text.data(), text.size()) == FileResult::kDone;
}

// A file that could not be written to its end would give every process another name.
void makeIdentity(const std::string& path) {
  Platform::FileCalls& calls = Platform::fileCalls();
  Platform::File* file = calls.openForWriting(path.c_str(), nullptr);
  if (file == nullptr) {
    return;
  }
  char text[37];
  UID::Generate().toString(text, sizeof text);
  const bool written = writeWhole(*file, std::string(kNamePrefix) + text);
  const bool closed = calls.close(file) == FileResult::kDone;
  if (!written || !closed) {
    (void)calls.remove(path.c_str());
  }
}

std::string readWhole(const std::string& path) {
  Platform::FileCalls& calls = Platform::fileCalls();
  const std::unique_ptr<Platform::File, FileResult (*)(Platform::File*)> file(
      calls.openForReading(path.c_str()), calls.close);
  std::string text;
  FileResult result = file != nullptr ? FileResult::kDone : FileResult::kFailed;
  for (std::size_t taken = 1; result == FileResult::kDone && taken != 0;) {
    char piece[512];
    result = calls.read(*file, piece, sizeof piece, &taken);
    text.append(piece, taken);
  }
  if (result != FileResult::kDone) {
    throw std::length_error("the identity file " + path + " can neither be read nor made");
  }
  return text;
}

std::string identityOf(const std::string& pathname) {
  const std::string path = identityPathname(pathname);
  Platform::FileStatus found;
  if (Platform::fileCalls().status(path.c_str(), &found) != FileResult::kDone) {
    makeIdentity(path);
  }
  const std::string name = readWhole(path);
  return name.empty() ? kNameOfEmptyFile : name;
}

}  // namespace

std::string defaultFileName(enumRegRoot root) {
  const char* name = registryRootName(root);
  return name != nullptr ? std::string(name) + ".cfg" : std::string();
}

std::string cfgDefaultPathname(enumRegRoot root) {
  const char* name = registryRootName(root);
  const char* pathname = name != nullptr ? std::getenv(name) : nullptr;
  return pathname != nullptr ? pathname : defaultFileName(root);
}

const std::string& cfgLockName(const std::string& pathname) {
  const ScopedLock threads(storeLock());
  NamedMutex identityLock("qs_config_lock");
  std::map<std::string, std::string>& names = lockNames();
  auto known = names.find(pathname);
  if (known == names.end()) {
    const NamedMutexHold processes(identityLock);
    known = names.emplace(pathname, identityOf(pathname)).first;
  }
  return known->second;
}

NamedMutexHold::NamedMutexHold(NamedMutex& mutex) : m_mutex(mutex) {
  try {
    mutex.lock();
  } catch (...) {
    mutex.unlock();
    throw;
  }
}

StoreHold::StoreHold(const std::string& pathname)
    : m_mutex(cfgLockName(pathname).c_str()), m_threads(storeLock()), m_processes(m_mutex) {}

}  // namespace LTLib::detail
