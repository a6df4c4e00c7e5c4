#include "ltreg/key_handle.h"

namespace ltreg {
namespace {

constexpr int kMoreData = 234;  // the operating system's number for a buffer that is too small

// Collects names until `enumerate(index, buffer, size)` finds no more. A name that fills the whole
// buffer may have been cut, so that it is asked for again with more room.
template <class Enumerate>
std::vector<std::string> allNames(Enumerate enumerate) {
  std::vector<std::string> names;
  std::string buffer(256, '\0');
  for (;;) {
    auto size = static_cast<unsigned int>(buffer.size());
    const int result = enumerate(static_cast<unsigned int>(names.size()), buffer.data(), &size);
    if (result == 0 && size < buffer.size()) {
      names.push_back(buffer.substr(0, size));
    } else if (result == 0) {
      buffer.resize(std::size_t{size} + 1);
    } else if (result == kMoreData && buffer.size() < 65536) {
      buffer.resize(2 * buffer.size());
    } else {
      return names;
    }
  }
}

bool endsInTerminators(unsigned int type) {
  return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

}  // namespace

KeyHandle::KeyHandle(QSRegistryManager& manager, enumRegRoot root, const std::string& path,
                     int access)
    : m_manager(manager) {
  if (manager.regOpenKeyEx(LTLib::predefinedRootHandle(root), path.c_str(), 0, access, &m_key) !=
      0) {
    m_key = nullptr;
  }
}

std::vector<std::string> KeyHandle::subKeys() const {
  return allNames([&](unsigned int index, char* name, unsigned int* size) {
    return m_manager.regEnumKeyEx(m_key, index, name, size);
  });
}

std::vector<std::string> KeyHandle::valueNames() const {
  return allNames([&](unsigned int index, char* name, unsigned int* size) {
    return m_manager.regEnumValue(m_key, index, name, size, nullptr, nullptr, nullptr, nullptr);
  });
}

std::optional<Value> KeyHandle::value(std::string name) const {
  Value found;
  unsigned int size = 0;
  if (m_manager.regQueryValueEx(m_key, name.data(), &found.type, nullptr, &size) != 0) {
    return std::nullopt;
  }
  // The terminator of a text is copied along without being counted.
  found.data.resize(std::size_t{size} + 1);
  unsigned int type = REG_NONE;
  auto* bytes = reinterpret_cast<unsigned char*>(found.data.data());
  if (m_manager.regQueryValueEx(m_key, name.data(), &type, bytes, &size) != 0) {
    return std::nullopt;
  }
  found.data.resize(size);
  while (endsInTerminators(found.type) && found.data.ends_with('\0')) {
    found.data.pop_back();
  }
  return found;
}

int KeyHandle::setValue(const std::string& name, unsigned int type,
                        const std::string& bytes) const {
  return m_manager.regSetValueEx(m_key, name.c_str(), type,
                                 reinterpret_cast<const unsigned char*>(bytes.data()),
                                 static_cast<unsigned int>(bytes.size()));
}

int KeyHandle::deleteValue(const std::string& name) const {
  return m_manager.regDeleteValue(m_key, name.c_str());
}

}  // namespace ltreg
