#include "ltlib/registry/reg_enum.h"

#include "ltlib/registry/system_numbers.h"

using LTLib::resultFromSystemError;
using LTLib::detail::kMoreData;

namespace {

constexpr unsigned int kNameCapacity = 200;

// Asks for the name at `index` with `fetch` and moves on. A name that fills the buffer came cut,
// which the file backend does not tell.
template <class Fetch>
QSResult nextName(std::string& name, unsigned int& index, Fetch fetch) {
  char buffer[kNameCapacity];
  unsigned int size = kNameCapacity;
  int result = fetch(buffer, &size);
  if (result == 0 && size >= kNameCapacity) {
    result = kMoreData;
  }
  if (result == 0) {
    name = buffer;
    ++index;
  }
  return resultFromSystemError(result);
}

}  // namespace

CQSRegEnumKey::CQSRegEnumKey(enumRegRoot root, const char* path) {
  (void)m_key.SetKey(root, path);
}

QSResult CQSRegEnumKey::GetNext(std::string& name) {
  void* handle = nullptr;
  if (const QSResult opened = m_key.OpenKey(&handle, false); opened < 0) {
    return opened;
  }
  const CQSRegKey::Closing closing(m_key);
  return nextName(name, m_index, [&](char* buffer, unsigned int* size) {
    return QSRegistryManager::GetInstance()->regEnumKeyEx(handle, m_index, buffer, size);
  });
}

QSResult CQSRegEnumKey::GetNext(CQSRegKey& entry) {
  std::string name;
  const QSResult result = GetNext(name);
  if (result >= 0) {
    (void)entry.SetKey(m_key, name.c_str());
  }
  return result;
}

QSResult CQSRegEnumKey::GetFirst(std::string& name) {
  m_index = 0;
  return GetNext(name);
}

QSResult CQSRegEnumKey::GetFirst(CQSRegKey& entry) {
  m_index = 0;
  return GetNext(entry);
}

CQSRegEnumValue::CQSRegEnumValue(enumRegRoot root, const char* path) {
  (void)m_key.SetKey(root, path);
}

QSResult CQSRegEnumValue::GetNext(std::string& name) {
  void* handle = nullptr;
  if (const QSResult opened = m_key.OpenKey(&handle, false); opened < 0) {
    return opened;
  }
  const CQSRegKey::Closing closing(m_key);
  return nextName(name, m_index, [&](char* buffer, unsigned int* size) {
    return QSRegistryManager::GetInstance()->regEnumValue(handle, m_index, buffer, size, nullptr,
                                                          nullptr, nullptr, nullptr);
  });
}

QSResult CQSRegEnumValue::GetNext(CQSRegValue& entry) {
  std::string name;
  const QSResult result = GetNext(name);
  if (result >= 0) {
    (void)entry.SetKey(m_key);
    (void)entry.SetName(name.c_str());
  }
  return result;
}

QSResult CQSRegEnumValue::GetFirst(std::string& name) {
  m_index = 0;
  return GetNext(name);
}

QSResult CQSRegEnumValue::GetFirst(CQSRegValue& entry) {
  m_index = 0;
  return GetNext(entry);
}
