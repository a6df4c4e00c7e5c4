#include "tests/registry/stub_manager.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "ltlib/foundation/kqsresult.h"

namespace LTLib::Testing {
namespace {

constexpr int kNoMoreItems = 259;

std::string hex(std::uint64_t number) {
  std::string digits;
  do {
    digits.insert(digits.begin(), "0123456789ABCDEF"[number % 16]);
    number /= 16;
  } while (number != 0);
  return digits;
}

std::string rootText(void* root) {
  return hex(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(root)));
}

std::string nameText(const char* name) {
  return name != nullptr ? '"' + std::string(name) + '"' : "null";
}

// An open handle is the path that it was opened with.
void* makeHandle(const char* path) {
  return new std::string(path);
}

const std::string& pathOf(void* handle) {
  return *static_cast<std::string*>(handle);
}

int give(const std::string& found, char* name, unsigned int* nameSize) {
  std::memcpy(name, found.c_str(), std::min<std::size_t>(*nameSize, found.size() + 1));
  *nameSize = static_cast<unsigned int>(found.size());
  return 0;
}

}  // namespace

std::vector<std::string> StubManager::asked() {
  return std::exchange(m_asked, {});
}

void StubManager::throwIfToldTo() const {
  if (m_throws) {
    throw QSException("stub_manager", __LINE__, kFailure, "registry read failed");
  }
}

int StubManager::regCloseKey(void* key) {
  note("close " + pathOf(key));
  delete static_cast<std::string*>(key);
  return 0;
}

int StubManager::regOpenKeyEx(void* key, const char* subKey, unsigned int options, int samDesired,
                              void** result) {
  note("open " + rootText(key) + ' ' + subKey + ' ' + hex(static_cast<unsigned int>(samDesired)) +
       (options != 0 || *result != nullptr ? " with leftovers" : ""));
  if (m_open == 0) {
    *result = makeHandle(subKey);
  }
  return m_open;
}

int StubManager::regQueryValueEx(void* /*key*/, char* valueName, unsigned int* type,
                                 unsigned char* data, unsigned int* dataSize) {
  note("query " + nameText(valueName) + (data != nullptr ? " data, type " : " size, type ") +
       std::to_string(*type));
  throwIfToldTo();
  *type = m_type;
  if (data == nullptr) {
    *dataSize = m_size;
    return m_sizeQuery;
  }
  std::memcpy(data, m_bytes.data(), std::min<std::size_t>(m_bytes.size(), *dataSize));
  return m_fetch;
}

int StubManager::regCreateKey(void* /*key*/, const char* /*subKey*/, void** /*result*/) {
  return -1;
}

int StubManager::regCreateKeyEx(void* key, const char* subKey, char* keyClass, unsigned int options,
                                unsigned int samDesired, void** result, unsigned int* disposition) {
  const bool plain = keyClass == nullptr && options == 0 && disposition != nullptr;
  note("create " + rootText(key) + ' ' + subKey + ' ' + hex(samDesired) + (plain ? "" : " oddly"));
  if (m_create == 0) {
    *result = makeHandle(subKey);
  }
  return m_create;
}

int StubManager::regSetValueEx(void* /*key*/, const char* valueName, unsigned int type,
                               const unsigned char* data, unsigned int dataSize) {
  m_bytes.assign(reinterpret_cast<const char*>(data), dataSize);
  note("set " + nameText(valueName) + " type " + std::to_string(type));
  return m_set;
}

int StubManager::regEnumKeyEx(void* key, unsigned int index, char* name, unsigned int* nameSize) {
  throwIfToldTo();
  const std::vector<std::string>& names = m_subKeys[pathOf(key)];
  if (m_enum != 0 || index >= names.size()) {
    return m_enum != 0 ? m_enum : kNoMoreItems;
  }
  return give(names[index], name, nameSize);
}

int StubManager::regEnumKey(void* /*key*/, unsigned int /*index*/, char* /*name*/,
                            unsigned int /*nameSize*/) {
  return -1;
}

int StubManager::regEnumValue(void* /*key*/, unsigned int index, char* name, unsigned int* nameSize,
                              unsigned int* reserved, unsigned int* type, unsigned char* data,
                              unsigned int* dataSize) {
  const bool nameAlone = reserved == nullptr && type == nullptr && data == nullptr &&
                         dataSize == nullptr && *nameSize == 200;
  note("walk " + std::to_string(index) + (nameAlone ? "" : " oddly"));
  throwIfToldTo();
  return m_enum != 0 ? m_enum : give(m_name, name, nameSize);
}

int StubManager::regDeleteKey(void* key, const char* subKey) {
  const std::string path = subKey;
  note("delete " + rootText(key) + ' ' + path);
  if (path == m_undeletable) {
    return 5;
  }
  const std::size_t cut = std::min(path.rfind('\\'), path.size());
  std::erase(m_subKeys[path.substr(0, cut)], path.substr(std::min(cut + 1, path.size())));
  return 0;
}

int StubManager::regDeleteValue(void* key, const char* valueName) {
  note("delete " + nameText(valueName) + (key != nullptr ? "" : " of null"));
  return key != nullptr ? m_set : 6;
}

long StubManager::saveConfiguration(enumRegRoot /*root*/) {
  return 0;
}

long StubManager::saveConfiguration(enumRegRoot /*root*/, std::string& /*pathname*/) {
  return 0;
}

std::string StubManager::GetConfigurationPathname(enumRegRoot /*root*/) {
  return {};
}

}  // namespace LTLib::Testing
