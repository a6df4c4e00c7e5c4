#include "ltreg/registry/key_handle.h"

#include <utility>

namespace ltreg {
namespace {

// The operating system's numbers.
constexpr int kMoreData = 234;
constexpr int kNoMoreItems = 259;
constexpr int kSetValue = 2;  // the one right that changes of values need

constexpr unsigned int kFirstSize = 256;
// Room for the longest name of a value that the system takes: 16,383 characters, in UTF-8.
constexpr unsigned int kMostSize = 1U << 16;

// Collects names until `enumerate(index, buffer, size)` finds no more. A name that fills the whole
// buffer may have been cut, so that it is asked for again with more room.
template <class Enumerate>
Names allNames(Enumerate enumerate) {
  Names all;
  std::string buffer(kFirstSize, '\0');
  for (;;) {
    auto size = static_cast<unsigned int>(buffer.size());
    const int result = enumerate(static_cast<unsigned int>(all.names.size()), buffer.data(), &size);
    if (result == kDone && size < buffer.size()) {
      all.names.push_back(buffer.substr(0, size));
    } else if (result == kDone) {
      buffer.resize(std::size_t{size} + 1);
    } else if (result == kMoreData && buffer.size() < kMostSize) {
      buffer.resize(2 * buffer.size());
    } else {
      // The file backend has one number alone, which here stands for the end.
      all.failure = result < 0 || result == kNoMoreItems ? kDone : result;
      return all;
    }
  }
}

}  // namespace

KeyHandle::KeyHandle(const Backend& backend, enumRegRoot root, const std::string& path, KeyUse use)
    : m_manager(backend.manager()), m_onFiles(backend.onFiles()) {
  // Opening never makes anything on files, and the first value that is set makes all parents there.
  void* above = LTLib::predefinedRootHandle(root);
  const int access = (use == KeyUse::kRead ? KEY_READ : kSetValue) | backend.viewAccess();
  m_failure = use == KeyUse::kMake && !m_onFiles
                  ? m_manager.regCreateKeyEx(above, path.c_str(), nullptr, 0,
                                             static_cast<unsigned int>(access), &m_key, nullptr)
                  : m_manager.regOpenKeyEx(above, path.c_str(), 0, access, &m_key);
}

KeyHandle::~KeyHandle() {
  if (m_failure == kDone) {
    m_manager.regCloseKey(m_key);
  }
}

Names KeyHandle::subKeys() const {
  return allNames([&](unsigned int index, char* name, unsigned int* size) {
    return m_failure != kDone ? m_failure : m_manager.regEnumKeyEx(m_key, index, name, size);
  });
}

Names KeyHandle::valueNames() const {
  return allNames([&](unsigned int index, char* name, unsigned int* size) {
    return m_failure != kDone ? m_failure
                              : m_manager.regEnumValue(m_key, index, name, size, nullptr, nullptr,
                                                       nullptr, nullptr);
  });
}

int KeyHandle::value(const std::string& name, Value& found) const {
  if (m_failure != kDone) {
    return m_failure;
  }
  LTLib::RegistryValue value;
  const int result = m_manager.queryWholeValue(m_key, name.c_str(), value);
  found = asRead(value.type, std::move(value.bytes), m_onFiles);
  return result;
}

int KeyHandle::setValue(const std::string& name, unsigned int type,
                        const std::string& bytes) const {
  return m_failure != kDone
             ? m_failure
             : m_manager.regSetValueEx(m_key, name.c_str(), type,
                                       reinterpret_cast<const unsigned char*>(bytes.data()),
                                       static_cast<unsigned int>(bytes.size()));
}

int KeyHandle::deleteValue(const std::string& name) const {
  return m_failure != kDone ? m_failure : m_manager.regDeleteValue(m_key, name.c_str());
}

int KeyHandle::deleteSubKey(const std::string& name) const {
  return m_failure != kDone ? m_failure : m_manager.regDeleteKey(m_key, name.c_str());
}

}  // namespace ltreg
