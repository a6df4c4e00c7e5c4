// An open key, closed at the end of the object.
#ifndef LTREG_REGISTRY_KEY_HANDLE_H
#define LTREG_REGISTRY_KEY_HANDLE_H

#include <string>
#include <vector>

#include "ltlib/ltlib.h"
#include "ltreg/registry/backend.h"
#include "ltreg/registry/value.h"

namespace ltreg {

/// The manager's numbers that the tool knows; both backends give 0 for what is done.
inline constexpr int kDone = 0;
inline constexpr int kNotFound = 2;  // by the operating system's registry alone

/// What a key is opened for. One that is to be made comes into being with its parents; on files
/// that is done by the first value.
enum class KeyUse { kRead, kChange, kMake };

struct Names {
  std::vector<std::string> names;
  int failure = kDone;  // why there may be more
};

/// Every operation on a handle that could not be opened gives the number of that failure.
class KeyHandle {
 public:
  KeyHandle(const Backend& backend, enumRegRoot root, const std::string& path, KeyUse use);
  ~KeyHandle();
  KeyHandle(const KeyHandle&) = delete;
  KeyHandle& operator=(const KeyHandle&) = delete;

  /// Why the key is not open; on the file backend kDone for an absent key as well.
  [[nodiscard]] int failure() const { return m_failure; }

  [[nodiscard]] Names subKeys() const;
  [[nodiscard]] Names valueNames() const;

  // These give the manager's numbers.
  [[nodiscard]] int value(const std::string& name, Value& found) const;
  [[nodiscard]] int setValue(const std::string& name, unsigned int type,
                             const std::string& bytes) const;
  [[nodiscard]] int deleteValue(const std::string& name) const;
  /// Requires: the key does not lie in a file; the file backend opens nothing relative to a key.
  [[nodiscard]] int deleteSubKey(const std::string& name) const;

 private:
  QSRegistryManagerImpl& m_manager;
  bool m_onFiles;
  void* m_key = nullptr;
  int m_failure = kDone;
};

}  // namespace ltreg

#endif  // LTREG_REGISTRY_KEY_HANDLE_H
