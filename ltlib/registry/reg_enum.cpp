// The two walks differ in what they ask the manager for and in what they set an entry up with. Their
// steps call one another virtually, since derived classes may take part in a walk.
#include "ltlib/registry/reg_enum.h"

CQSRegEnumKey::CQSRegEnumKey(enumRegRoot root, const char* path) {
  (void)m_key.SetKey(root, path);
}

QSResult CQSRegEnumKey::GetNext(std::string& name) {
  return m_key.nextName(
      name, m_index,
      [](QSRegistryManager& manager, void* key, unsigned int index, char* buffer,
         unsigned int* size) { return manager.regEnumKeyEx(key, index, buffer, size); });
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
  return m_key.nextName(name, m_index,
                        [](QSRegistryManager& manager, void* key, unsigned int index, char* buffer,
                           unsigned int* size) {
                          return manager.regEnumValue(key, index, buffer, size, nullptr, nullptr,
                                                      nullptr, nullptr);
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
