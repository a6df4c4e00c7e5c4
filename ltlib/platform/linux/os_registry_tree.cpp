#include "ltlib/platform/linux/os_registry_tree.h"

#include <algorithm>
#include <utility>

namespace LTLib::Platform::OsRegistry {
namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::uint32_t kRoots[] = {0x80000000u, 0x80000001u, 0x80000002u, 0x80000003u,
                                    0x80000005u};

std::uintptr_t numberOf(const void* handle) noexcept {
  return reinterpret_cast<std::uintptr_t>(handle);
}

std::uintptr_t numberOf(std::uint32_t root) noexcept {
  return static_cast<std::uintptr_t>(static_cast<std::intptr_t>(static_cast<std::int32_t>(root)));
}

char16_t folded(char16_t unit) noexcept {
  return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
}

std::shared_ptr<Key> addSubKey(const std::shared_ptr<Key>& parent, std::u16string_view name) {
  auto key = std::make_shared<Key>();
  key->parent = parent;
  parent->subKeys.emplace(name, key);
  return key;
}

}  // namespace

bool NameLess::operator()(std::u16string_view left, std::u16string_view right) const noexcept {
  return std::lexicographical_compare(
      left.begin(), left.end(), right.begin(), right.end(),
      [](char16_t one, char16_t other) { return folded(one) < folded(other); });
}

Tree::Tree() {
  for (const std::uint32_t root : kRoots) {
    m_handles[numberOf(root)] = {std::make_shared<Key>(), kAllAccess};
  }
}

Error Tree::find(void* handle, unsigned int rights, std::shared_ptr<Key>& key) const {
  const auto found = m_handles.find(numberOf(handle));
  if (found == m_handles.end()) {
    return kInvalidHandle;
  }
  key = found->second.key;
  if (key->deleted) {
    return kKeyDeleted;
  }
  return (found->second.rights & rights) == rights ? kDone : kAccessDenied;
}

// Numbers are never given out twice, so that a handle that was closed stays a bad one.
void* Tree::open(std::shared_ptr<Key> key, unsigned int rights) {
  m_last += 4;
  m_handles[m_last] = {std::move(key), rights};
  return reinterpret_cast<void*>(m_last);
}

Error Tree::close(void* handle) {
  return isPredefined(handle) || m_handles.erase(numberOf(handle)) == 1 ? kDone : kInvalidHandle;
}

bool Tree::isPredefined(const void* handle) noexcept {
  return std::any_of(std::begin(kRoots), std::end(kRoots),
                     [&](std::uint32_t root) { return numberOf(root) == numberOf(handle); });
}

Error walk(const std::shared_ptr<Key>& from, std::u16string_view path, bool* made,
           std::shared_ptr<Key>& reached) {
  if (path.starts_with(u'\\')) {
    return kBadPathname;
  }
  reached = from;
  while (!path.empty()) {
    const std::u16string_view name = path.substr(0, path.find(u'\\'));
    path.remove_prefix(std::min(path.size(), name.size() + 1));
    if (name.empty()) {
      continue;
    }
    const auto found = reached->subKeys.find(std::u16string(name));
    const bool missing = found == reached->subKeys.end();
    if (missing && (made == nullptr || name.size() > kLongestName)) {
      return made == nullptr ? kFileNotFound : kInvalidParameter;
    }
    if (made != nullptr) {
      *made = missing;
    }
    reached = missing ? addSubKey(reached, name) : found->second;
  }
  return kDone;
}

Error remove(const std::shared_ptr<Key>& key) {
  const std::shared_ptr<Key> parent = key->parent.lock();
  if (parent == nullptr || !key->subKeys.empty()) {
    return kAccessDenied;
  }
  key->deleted = true;
  std::erase_if(parent->subKeys, [&](const auto& entry) { return entry.second == key; });
  return kDone;
}

}  // namespace LTLib::Platform::OsRegistry
