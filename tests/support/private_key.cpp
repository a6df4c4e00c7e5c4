#include "tests/support/private_key.h"

#include <random>
#include <stdexcept>

namespace LTLib::Testing {

PrivateKey::PrivateKey()
    : m_path("Software\\ltlib_test_" + std::to_string(std::random_device()())) {
  if (m_manager.regCreateKey(root(), m_path.c_str(), &m_key) != 0) {
    throw std::runtime_error("no key for the test");
  }
}

PrivateKey::~PrivateKey() {
  m_manager.regCloseKey(m_key);
  removeTree(m_path);
}

std::string PrivateKey::path(const std::string& subKey) const {
  return subKey.empty() ? m_path : m_path + '\\' + subKey;
}

bool PrivateKey::removeTree(const std::string& path) {
  void* key = nullptr;
  if (m_manager.regOpenKeyEx(root(), path.c_str(), 0, KEY_READ, &key) != 0) {
    return false;
  }
  char name[256];
  bool removed = true;
  while (removed && m_manager.regEnumKey(key, 0, name, sizeof name) == 0) {
    removed = removeTree(path + '\\' + name);
  }
  m_manager.regCloseKey(key);
  return removed && m_manager.regDeleteKey(root(), path.c_str()) == 0;
}

}  // namespace LTLib::Testing
