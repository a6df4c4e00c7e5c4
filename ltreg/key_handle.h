// An open key, closed at the end of the object.
#ifndef LTREG_KEY_HANDLE_H
#define LTREG_KEY_HANDLE_H

#include <optional>
#include <string>
#include <vector>

#include "ltlib/ltlib.h"
#include "ltreg/value.h"

namespace ltreg {

/// Every operation on a handle that could not be opened gives the manager's failure or nothing.
class KeyHandle {
 public:
  KeyHandle(QSRegistryManager& manager, enumRegRoot root, const std::string& path, int access);
  ~KeyHandle() { m_manager.regCloseKey(m_key); }
  KeyHandle(const KeyHandle&) = delete;
  KeyHandle& operator=(const KeyHandle&) = delete;

  /// On the file backend true for an absent key as well.
  [[nodiscard]] bool isOpen() const { return m_key != nullptr; }

  [[nodiscard]] std::vector<std::string> subKeys() const;
  [[nodiscard]] std::vector<std::string> valueNames() const;
  [[nodiscard]] std::optional<Value> value(std::string name) const;
  [[nodiscard]] int setValue(const std::string& name, unsigned int type,
                             const std::string& bytes) const;
  [[nodiscard]] int deleteValue(const std::string& name) const;

 private:
  QSRegistryManager& m_manager;
  void* m_key = nullptr;
};

}  // namespace ltreg

#endif  // LTREG_KEY_HANDLE_H
