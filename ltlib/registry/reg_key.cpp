#include "ltlib/registry/reg_key.h"

#include <deque>
#include <string_view>

#include "ltlib/registry/reg_enum.h"
#include "ltlib/variables/variable_manager.h"

using LTLib::kFailure;
using LTLib::kSuccess;
using LTLib::predefinedRootHandle;
using LTLib::resultFromSystemError;

namespace {

// Backslashes at the end may be passed over by a backend, and so make no difference.
bool namesLongerPath(std::string_view path, std::string_view other) {
  return path.find_last_not_of('\\') + 1 > other.find_last_not_of('\\') + 1;
}

}  // namespace

CQSRegKey::CQSRegKey(enumRegRoot root, const char* path) {
  (void)SetKey(root, path);
}

CQSRegKey::CQSRegKey(const CQSRegKey& parent, const char* subKey) {
  (void)SetKey(parent, subKey);
}

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
  m_path = std::string(path);
  return QSExpandString(m_path);
}

QSResult CQSRegKey::SetKey(const CQSRegKey& parent, const char* subKey) {
  if (subKey == nullptr) {
    return kFailure;
  }
  m_root = parent.m_root;
  m_path = parent.m_path + '\\' + subKey;
  return QSExpandString(m_path);
}

QSResult CQSRegKey::deleteItself() {
  QSRegistryManager* manager = QSRegistryManager::GetInstance();
  return manager != nullptr ? resultFromSystemError(manager->regDeleteKey(
                                  predefinedRootHandle(m_root), m_path.c_str()))
                            : kFailure;
}

// Goes down to the deepest first child again and again, since each deletion moves the others up.
QSResult CQSRegKey::DeleteKey(bool recursive) {
  std::deque<CQSRegKey> below;
  for (;;) {
    CQSRegKey& last = below.empty() ? *this : below.back();
    CQSRegKey child;
    if (recursive && CQSRegEnumKey(last.m_root, last.GetPath()).GetFirst(child) >= 0) {
      // A child's name is expanded too. One that leads back up must not be followed for ever.
      if (!namesLongerPath(child.m_path, last.m_path)) {
        return kFailure;
      }
      below.push_back(child);
      continue;
    }
    if (const QSResult result = last.deleteItself(); result < 0 || below.empty()) {
      return result;
    }
    below.pop_back();
  }
}

bool CQSRegKey::IsCreated() {
  void* local = nullptr;
  const bool opened = OpenKey(&local, false) >= 0;
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
  QSRegistryManager* manager = QSRegistryManager::GetInstance();
  void* handle = m_handle;
  m_handle = nullptr;
  return manager != nullptr ? resultFromSystemError(manager->regCloseKey(handle)) : kFailure;
}
