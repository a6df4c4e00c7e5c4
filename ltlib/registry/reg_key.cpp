// Nothing is kept open between two operations: m_handle is set for the length of one, so that every
// way out of it, exceptions included, finds the handle and closes it.
#include "ltlib/registry/reg_key.h"

#include <string_view>
#include <utility>
#include <vector>

#include "ltlib/registry/reg_enum.h"
#include "ltlib/registry/system_numbers.h"
#include "ltlib/variables/variable_manager.h"

using LTLib::kFailure;
using LTLib::kSuccess;
using LTLib::predefinedRootHandle;
using LTLib::resultFromSystemError;

namespace {

// The longest name that a walk gives, terminator included.
constexpr unsigned int kNameCapacity = 200;

// Backslashes at the end may be passed over by a backend, and so make no difference.
bool namesLongerPath(std::string_view path, std::string_view other) {
  return path.find_last_not_of('\\') + 1 > other.find_last_not_of('\\') + 1;
}

// The path of a key, led down to sub-keys and back up. Whole paths for all levels would need memory
// that grows with the square of the depth.
class WalkedPath {
 public:
  explicit WalkedPath(std::string& path) : m_path(path) {}

  [[nodiscard]] bool isBelow() const { return !m_above.empty(); }
  bool goDown(const std::string& name);
  void goUp();

 private:
  struct Above {
    std::size_t length;
    std::string path;  // kept only if the path below does not begin with it
  };

  std::string& m_path;
  std::vector<Above> m_above;
};

// A sub-key's name is expanded with the path. One that leads back up must not be followed for ever.
bool WalkedPath::goDown(const std::string& name) {
  Above above{m_path.size(), {}};
  m_path.append("\\").append(name);
  if (m_path.find('%') != std::string::npos) {
    above.path = m_path.substr(0, above.length);
    (void)QSExpandString(m_path);
    if (m_path.starts_with(above.path)) {
      above.path.clear();
    }
  }
  const bool longer = namesLongerPath(
      m_path, above.path.empty() ? std::string_view(m_path).substr(0, above.length) : above.path);
  m_above.push_back(std::move(above));
  return longer;
}

void WalkedPath::goUp() {
  if (m_above.back().path.empty()) {
    m_path.resize(m_above.back().length);
  } else {
    m_path = std::move(m_above.back().path);
  }
  m_above.pop_back();
}

}  // namespace

CQSRegKey::CQSRegKey(enumRegRoot root, const char* path) {
  (void)SetKey(root, path);
}

CQSRegKey::CQSRegKey(const CQSRegKey& parent, const char* subKey) {
  (void)SetKey(parent, subKey);
}

// Copies expand once more, since a variable may have been defined after the first time.
CQSRegKey::CQSRegKey(const CQSRegKey& other) : m_path(other.m_path), m_root(other.m_root) {
  (void)QSExpandString(m_path);
}

CQSRegKey& CQSRegKey::operator=(const CQSRegKey& other) {
  if (this != &other) {
    m_root = other.m_root;
    m_path = other.m_path;
  }
  (void)QSExpandString(m_path);
  return *this;
}

CQSRegKey::~CQSRegKey() {
  (void)CloseKey();
}

QSResult CQSRegKey::SetKey(enumRegRoot root, const char* path) {
  if (path == nullptr) {
    return kFailure;
  }
  m_root = root;
  // By way of a copy: the text may be a part of this very path.
  m_path = std::string(path);
  return QSExpandString(m_path);
}

QSResult CQSRegKey::SetKey(const CQSRegKey& parent, const char* subKey) {
  if (subKey == nullptr) {
    return kFailure;
  }
  m_root = parent.m_root;
  // The sum is a text of its own, so that the parent may be this object.
  m_path = parent.m_path + '\\' + subKey;
  return QSExpandString(m_path);
}

QSResult CQSRegKey::deleteItself() {
  QSRegistryManager* manager = QSRegistryManager::GetInstance();
  return manager != nullptr ? resultFromSystemError(manager->regDeleteKey(
                                  predefinedRootHandle(m_root), m_path.c_str()))
                            : kFailure;
}

QSResult CQSRegKey::DeleteKey(bool recursive) {
  return recursive ? deleteBranch() : deleteItself();
}

// Goes down to the deepest first child again and again, since each deletion moves the others up.
QSResult CQSRegKey::deleteBranch() {
  // One walk for all levels: a call for each would need a stack as deep as the keys.
  CQSRegEnumKey walk(*this);
  WalkedPath path(walk.m_key.m_path);
  std::string name;
  for (;;) {
    if (walk.GetFirst(name) >= 0) {
      if (!path.goDown(name)) {
        return kFailure;
      }
    } else if (!path.isBelow()) {
      return deleteItself();
    } else {
      if (const QSResult result = walk.m_key.deleteItself(); result < 0) {
        return result;
      }
      path.goUp();
    }
  }
}

bool CQSRegKey::IsCreated() {
  void* local = nullptr;
  const bool opened = OpenKey(&local, false) >= 0;
  // A handle that came with a failure is closed all the same.
  if (local != nullptr) {
    (void)CloseKey();
  }
  return opened || local != nullptr;
}

QSResult CQSRegKey::OpenKey(void** out, bool forWriting) {
  QSRegistryManager* manager = QSRegistryManager::GetInstance();
  if (manager == nullptr) {
    return kFailure;
  }
  const int result = manager->regOpenKeyEx(predefinedRootHandle(m_root), m_path.c_str(), 0,
                                           forWriting ? KEY_ALL_ACCESS : KEY_READ, out);
  if (result == 0) {
    m_handle = *out;
  }
  return resultFromSystemError(result);
}

QSResult CQSRegKey::CreateKey(void** out) {
  if (m_path.empty()) {
    return kFailure;
  }
  // What did not expand when the path was set may do so now; no key gets a name with the rest.
  if (const QSResult expanded = QSExpandString(m_path); expanded < 0) {
    return expanded;
  }
  QSRegistryManager* manager = QSRegistryManager::GetInstance();
  if (manager == nullptr) {
    return kFailure;
  }
  unsigned int disposition = 0;
  const int result = manager->regCreateKeyEx(predefinedRootHandle(m_root), m_path.c_str(), nullptr,
                                             0, KEY_ALL_ACCESS, out, &disposition);
  if (result == 0) {
    m_handle = *out;
  }
  return resultFromSystemError(result);
}

QSResult CQSRegKey::CloseKey() {
  if (m_handle == nullptr) {
    return kSuccess;
  }
  // Forgotten ahead of the call, so that no second one ever closes the number, which may be another
  // key's by then.
  QSRegistryManager* manager = QSRegistryManager::GetInstance();
  void* handle = m_handle;
  m_handle = nullptr;
  return manager != nullptr ? resultFromSystemError(manager->regCloseKey(handle)) : kFailure;
}

// A name that fills the buffer came cut, which the file backend does not tell; the system does, by
// this very number.
QSResult CQSRegKey::nextName(std::string& name, unsigned int& index, FetchName fetch) {
  void* handle = nullptr;
  if (const QSResult opened = OpenKey(&handle, false); opened < 0) {
    return opened;
  }
  const Closing closing(*this);
  char buffer[kNameCapacity];
  unsigned int size = kNameCapacity;
  int result = fetch(*QSRegistryManager::GetInstance(), handle, index, buffer, &size);
  if (result == 0 && size >= kNameCapacity) {
    result = LTLib::detail::kMoreData;
  }
  if (result == 0) {
    name = buffer;
    ++index;
  }
  return resultFromSystemError(result);
}
