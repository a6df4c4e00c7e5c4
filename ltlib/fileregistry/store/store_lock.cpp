// Two locks between processes, since each alone leaves a hole: the named mutex is known to one
// machine or container, and file systems may lack the lock on the identity file. All take them in
// that order, so that no two wait for each other.
#include "ltlib/fileregistry/store/store_lock.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <vector>

#include "ltlib/fileregistry/store/store_wait.h"
#include "ltlib/foundation/do_once.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/foundation/process_mutex.h"
#include "ltlib/foundation/uid.h"
#include "ltlib/platform/lock_wait.h"
#include "ltlib/platform/process.h"

namespace LTLib::detail {
namespace {

using Platform::fileCalls;
using Platform::FileHandle;
using Platform::FileIdentity;
using Platform::FileResult;
using Platform::FileStatus;

constexpr char kIdentityFile[] = "qsconfig.dat";
constexpr char kIdentityLock[] = "qs_config_lock";
constexpr char kNamePrefix[] = "qs_config_";
constexpr char kNameOfEmptyFile[] = "qs_config";

// The library's own names have 46 bytes. What is longer is read under a lock that everybody on the
// machine waits for, and is no name.
constexpr std::size_t kLongestIdentity = 512;

// Removals by others can cross with ours; nobody can make that go on for ever.
constexpr int kAttempts = 100;

// An identity file whose lock this process holds, and how often.
struct HeldFolder {
  FileIdentity identity;
  FileHandle file;
  std::size_t depth = 0;
};

struct StoreState {
  ProcessMutex lock{ProcessLock::kStores};
  std::map<std::string, std::string> names;
  std::vector<HeldFolder> held;
  std::set<std::string> unlocked;  // pathnames of stores that are read without locks
};

ltDoOnce_t s_storeOnce;
StoreState* s_store = nullptr;

// A child that kept copies of the descriptors would keep the locks after its parent's end.
const Platform::ForkedChildHook s_childHook([]() noexcept {
  if (s_store != nullptr) {
    s_store->held.clear();
  }
});

void makeStore() {
  s_store = new StoreState;
}

StoreState& store() {
  ltDoOnce(s_storeOnce, makeStore);
  return *s_store;
}

std::string identityPathname(const std::string& pathname) {
  const std::size_t end = pathname.rfind(Platform::directorySeparator());
  return (end != std::string::npos ? pathname.substr(0, end + 1) : std::string()) + kIdentityFile;
}

[[noreturn]] void throwNoIdentity(const std::string& path, const std::string& reason) {
  throw std::length_error("the identity file " + path + " can neither be read nor made: " + reason);
}

std::string newName() {
  char text[37];
  UID::Generate().toString(text, sizeof text);
  return std::string(kNamePrefix) + text;
}

// A file that could not be written to its end would give every process another name. One that
// somebody else has made meanwhile is as good.
void makeIdentity(const std::string& path, const std::string& name) {
  Platform::FileCalls& calls = fileCalls();
  Platform::File* file = nullptr;
  if (calls.createForAll(path.c_str(), &file) != FileResult::kDone) {
    return;
  }
  const bool written = calls.write(*file, name.data(), name.size()) == FileResult::kDone;
  const bool closed = calls.close(file) == FileResult::kDone;
  if (!written || !closed) {
    (void)calls.remove(path.c_str());
  }
}

// The file is looked for before it is made, since most uses find it, and a folder that cannot be
// written may hold one.
FileHandle openIdentity(const std::string& path, const std::string& name) {
  FileHandle file;
  FileResult result = Platform::openFile(path, Platform::Links::kRefused, file);
  if (result == FileResult::kAbsent) {
    makeIdentity(path, name);
    result = Platform::openFile(path, Platform::Links::kRefused, file);
  }
  if (result != FileResult::kDone) {
    throwNoIdentity(path, Platform::lastFileFailure());
  }
  return file;
}

// Read to its end in pieces, as a size that was asked for may be another by then.
std::string nameIn(Platform::File& file, const std::string& path) {
  std::string text;
  char piece[kLongestIdentity + 1];
  for (std::size_t taken = 1; taken != 0 && text.size() <= kLongestIdentity;) {
    if (fileCalls().read(file, piece, sizeof piece, &taken) != FileResult::kDone) {
      throwNoIdentity(path, Platform::lastFileFailure());
    }
    text.append(piece, taken);
  }
  if (text.size() > kLongestIdentity) {
    throwNoIdentity(path, "it is longer than " + std::to_string(kLongestIdentity) + " bytes");
  }
  return text.empty() ? kNameOfEmptyFile : text;
}

std::string readIdentity(const std::string& path, const std::string& name) {
  const FileHandle file = openIdentity(path, name);
  return nameIn(*file, path);
}

// By identity, since one folder has any number of pathnames, and a second opening of its file by this
// process would wait for the first for ever.
HeldFolder* heldFolder(const FileIdentity& identity) {
  std::vector<HeldFolder>& held = store().held;
  const auto found = std::find_if(held.begin(), held.end(), [&](const HeldFolder& folder) {
    return folder.identity == identity;
  });
  return found != held.end() ? &*found : nullptr;
}

bool stillBears(const std::string& path, const FileIdentity& identity) {
  FileStatus named;
  return fileCalls().status(path.c_str(), &named) == FileResult::kDone &&
         named.identity == identity;
}

}  // namespace

std::string defaultFileName(enumRegRoot root) {
  const char* name = registryRootName(root);
  return name != nullptr ? std::string(name) + ".cfg" : std::string();
}

std::string cfgDefaultPathname(enumRegRoot root) {
  const char* name = registryRootName(root);
  const char* pathname = name != nullptr ? Platform::trustedEnvironment(name) : nullptr;
  return pathname != nullptr ? pathname : defaultFileName(root);
}

std::string locateStore(const std::string& pathname) {
  std::string located;
  const FileResult result = fileCalls().resolve(pathname.c_str(), &located);
  if (result == FileResult::kDone) {
    return located;
  }
  const std::string why =
      result == FileResult::kForeignLink
          ? "is a link that was laid neither by this user nor by root nor by its folder's owner"
          : "cannot be looked at: " + Platform::lastFileFailure();
  throw QSException("kFileRegistry", __LINE__, kFailure, (located + ' ' + why).c_str());
}

// The name that may be needed is made ahead of the lock, which the whole machine waits for.
const std::string& cfgLockName(const std::string& pathname) {
  StoreState& stores = store();
  const ScopedLock threads(stores.lock);
  NamedMutex identityLock(kIdentityLock);
  auto known = stores.names.find(pathname);
  if (known == stores.names.end()) {
    const std::string name = newName();
    const NamedMutexHold processes(identityLock);
    known = stores.names.emplace(pathname, readIdentity(identityPathname(pathname), name)).first;
  }
  return known->second;
}

std::map<std::string, std::string>& lockNames() {
  return store().names;
}

// An abandoned mutex is owned by then; on a thread that does not own it, unlock does nothing.
NamedMutexHold::NamedMutexHold(NamedMutex& mutex) : m_mutex(mutex) {
  try {
    mutex.lock();
  } catch (...) {
    mutex.unlock();
    throw;
  }
}

// The file may be removed while this waits for its lock: whoever comes then locks another one.
FolderHold::FolderHold(const std::string& pathname, const std::string& lockName) {
  if (store().unlocked.contains(pathname)) {
    return;
  }
  const std::string path = identityPathname(pathname);
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    FileHandle file = openIdentity(path, lockName);
    FileStatus opened;
    if (fileCalls().statusOf(*file, &opened) != FileResult::kDone) {
      break;
    }
    m_identity = opened.identity;
    if (HeldFolder* held = heldFolder(m_identity); held != nullptr) {
      ++held->depth;
      return;
    }
    // A file system without locks gives kUnsupported, and the mutex has to do.
    if (fileCalls().lock(*file) == FileResult::kFailed) {
      break;
    }
    if (stillBears(path, m_identity)) {
      store().held.push_back({m_identity, std::move(file), 1});
      return;
    }
  }
  throw QSException(
      "kFileRegistry", __LINE__, kFailure,
      ("the file " + path + " cannot be locked: " + Platform::lastFileFailure()).c_str());
}

// A forked child has let go of what its parent held, so that there may be nothing to find. Closing
// the file gives its lock up.
FolderHold::~FolderHold() {
  HeldFolder* held = heldFolder(m_identity);
  if (held != nullptr && --held->depth == 0) {
    std::swap(*held, store().held.back());
    store().held.pop_back();
  }
}

StoreHold::StoreHold(const std::string& pathname, const std::string& lockName)
    : m_mutex(lockName.c_str()),
      m_threads(store().lock),
      m_processes(m_mutex),
      m_folder(pathname, lockName) {}

}  // namespace LTLib::detail

namespace LTLib {
namespace {

StoreLock describedLock(const std::string& name, const std::string& file) {
  StoreLock lock{name, name.empty() ? file : Platform::namedLockPlace(name), 0, {}};
  const auto holder =
      name.empty() ? Platform::holderOfFileLock(file) : Platform::holderOfNamedLock(name);
  if (holder) {
    lock.holder = holder->process;
    lock.program = holder->program;
  }
  return lock;
}

}  // namespace

std::vector<StoreLock> storeLocks(const std::string& pathname) {
  std::vector<StoreLock> locks{describedLock(detail::kIdentityLock, {})};
  try {
    const std::string path = detail::identityPathname(detail::locateStore(pathname));
    Platform::FileHandle file;
    if (Platform::openFile(path, Platform::Links::kRefused, file) == Platform::FileResult::kDone) {
      locks.push_back(describedLock(detail::nameIn(*file, path), {}));
      locks.push_back(describedLock({}, path));
    }
  } catch (const QSException&) {        // a link that leads nowhere
  } catch (const std::length_error&) {  // a file that holds no name
  }
  return locks;
}

void limitStoreWaits(std::chrono::milliseconds limit) noexcept {
  Platform::limitLockWaits(limit);
}

// The name that an empty identity file gives is as good as any: nobody is kept out who could be met.
bool readWithoutLock(const std::string& pathname) {
  const std::string located = detail::locateStore(pathname);
  detail::StoreState& stores = detail::store();
  const ScopedLock threads(stores.lock);
  try {
    (void)detail::cfgLockName(located);
    return false;
  } catch (const std::length_error&) {
    stores.names.emplace(located, detail::kNameOfEmptyFile);
    stores.unlocked.insert(located);
    return true;
  }
}

}  // namespace LTLib
