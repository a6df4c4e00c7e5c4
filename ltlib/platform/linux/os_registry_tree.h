// The tree that stands in for a registry: keys, values and the numbers that handles are.
#ifndef LTLIB_PLATFORM_LINUX_OS_REGISTRY_TREE_H
#define LTLIB_PLATFORM_LINUX_OS_REGISTRY_TREE_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace LTLib::Platform::OsRegistry {

/// The error numbers that this registry gives, as Windows has them.
enum Error : int {
  kDone = 0,
  kFileNotFound = 2,
  kAccessDenied = 5,
  kInvalidHandle = 6,
  kInvalidParameter = 87,
  kBadPathname = 161,
  kMoreData = 234,
  kNoMoreItems = 259,
  kNoAccess = 998,
  kKeyDeleted = 1018,
};

/// What a handle may be used for, as bits of the access mask that it was opened with.
enum Right : unsigned int {
  kQueryValue = 0x0001,
  kSetValue = 0x0002,
  kEnumerateSubKeys = 0x0008,
  kAllAccess = 0xF003F,
};

/// Called ahead of each query of a value, with no lock held: where a test lets others change it.
inline void (*beforeQuery)() = nullptr;

/// Orders names without regard to the case of the ASCII letters.
struct NameLess {
  bool operator()(std::u16string_view left, std::u16string_view right) const noexcept;
};

struct Value {
  unsigned int type = 0;
  std::vector<unsigned char> data;
};

struct Key {
  std::map<std::u16string, std::shared_ptr<Key>, NameLess> subKeys;
  std::map<std::u16string, Value, NameLess> values;
  std::weak_ptr<Key> parent;
  bool deleted = false;
};

struct Handle {
  std::shared_ptr<Key> key;
  unsigned int rights = 0;
};

class Tree {
 public:
  Tree();

  /// What is behind a handle, which must have all the rights: kDone, kInvalidHandle, kKeyDeleted
  /// or kAccessDenied.
  [[nodiscard]] Error find(void* handle, unsigned int rights, std::shared_ptr<Key>& key) const;

  [[nodiscard]] void* open(std::shared_ptr<Key> key, unsigned int rights);
  /// Predefined handles stay open.
  [[nodiscard]] Error close(void* handle);
  [[nodiscard]] static bool isPredefined(const void* handle) noexcept;

 private:
  std::map<std::uintptr_t, Handle> m_handles;
  std::uintptr_t m_last = 0;
};

/// Follows a path from a key; makes what is missing if `made` is given, which then tells whether
/// the last component is new. Empty components are passed over. Null with kFileNotFound,
/// kBadPathname for a leading backslash, or kInvalidParameter for too long a name.
[[nodiscard]] Error walk(const std::shared_ptr<Key>& from, std::u16string_view path, bool* made,
                         std::shared_ptr<Key>& reached);

/// Takes a key without sub-keys out of the tree; handles to it stay and find it deleted.
[[nodiscard]] Error remove(const std::shared_ptr<Key>& key);

}  // namespace LTLib::Platform::OsRegistry

#endif  // LTLIB_PLATFORM_LINUX_OS_REGISTRY_TREE_H
