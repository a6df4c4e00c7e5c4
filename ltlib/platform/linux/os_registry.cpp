#include "ltlib/platform/os_registry.h"

#include <algorithm>
#include <iterator>
#include <mutex>

#include "ltlib/platform/linux/os_registry_tree.h"
#include "ltlib/platform/unicode.h"

namespace LTLib::Platform {
namespace {

using namespace OsRegistry;

constexpr std::size_t kLongestValueName = 16383;
constexpr unsigned int kTextTypes[] = {1, 2, 6, 7};
constexpr unsigned int kCreated = 1;
constexpr unsigned int kOpened = 2;

std::mutex s_guard;

// Never destroyed: late destructors may still use the registry.
Tree& tree() {
  static auto* const whole = new Tree;
  return *whole;
}

std::u16string wideOf(const char* text) {
  const std::string_view narrow(text != nullptr ? text : "");
  std::u16string wide(narrow.size(), u'\0');
  wide.resize(codePageToUtf16(narrow.data(), narrow.size(), wide.data(), wide.size()));
  return wide;
}

std::string narrowOf(std::u16string_view wide) {
  std::string narrow(wide.size() * 3, '\0');
  narrow.resize(utf16ToUtf8(wide.data(), wide.size(), narrow.data(), narrow.size()));
  return narrow;
}

// Copies a name with its terminator.
Error copyName(const std::u16string& name, char* out, unsigned int* size) {
  const std::string narrow = narrowOf(name);
  if (narrow.size() >= *size) {
    return kMoreData;
  }
  std::copy_n(narrow.c_str(), narrow.size() + 1, out);
  *size = static_cast<unsigned int>(narrow.size());
  return kDone;
}

// Tells the size and copies the bytes where they are asked for and fit.
template <class Bytes>
Error copyData(const Bytes& bytes, unsigned char* data, unsigned int* size) {
  if (size == nullptr) {
    return kDone;
  }
  const bool fits = bytes.size() <= *size;
  *size = static_cast<unsigned int>(bytes.size());
  if (data != nullptr && fits) {
    std::copy(bytes.begin(), bytes.end(), data);
  }
  return data == nullptr || fits ? kDone : kMoreData;
}

Error copyValue(const Value& value, unsigned char* data, unsigned int* size) {
  if (std::find(std::begin(kTextTypes), std::end(kTextTypes), value.type) == std::end(kTextTypes)) {
    return copyData(value.data, data, size);
  }
  std::u16string wide(value.data.size() / sizeof(char16_t), u'\0');
  std::copy_n(value.data.begin(), wide.size() * sizeof(char16_t),
              reinterpret_cast<unsigned char*>(wide.data()));
  return copyData(narrowOf(wide), data, size);
}

Error reach(void* key, const char* subKey, bool* made, std::shared_ptr<Key>& reached) {
  std::shared_ptr<Key> from;
  const Error error = tree().find(key, 0, from);
  return error != kDone ? error : walk(from, wideOf(subKey), made, reached);
}

template <class Entries>
auto entryAt(Entries& entries, unsigned int index) {
  return index < entries.size() ? std::next(entries.begin(), static_cast<std::ptrdiff_t>(index))
                                : entries.end();
}

}  // namespace

bool hasSystemRegistry() noexcept {
  return false;
}

namespace OsRegistry {

int closeKey(void* key) noexcept {
  const std::lock_guard<std::mutex> hold(s_guard);
  return tree().close(key);
}

int openKey(void* key, const char* subKey, unsigned int, unsigned int access,
            void** result) noexcept {
  const std::lock_guard<std::mutex> hold(s_guard);
  std::shared_ptr<Key> reached;
  const Error error = reach(key, subKey, nullptr, reached);
  if (error == kDone) {
    const bool same = Tree::isPredefined(key) && (subKey == nullptr || *subKey == '\0');
    *result = same ? key : tree().open(std::move(reached), access);
  }
  return error;
}

int createKey(void* key, const char* subKey, void** result) noexcept {
  return createKeyEx(key, subKey, nullptr, 0, kAllAccess, result, nullptr);
}

int createKeyEx(void* key, const char* subKey, char*, unsigned int, unsigned int access,
                void** result, unsigned int* disposition) noexcept {
  const std::lock_guard<std::mutex> hold(s_guard);
  std::shared_ptr<Key> reached;
  bool made = false;
  const Error error = reach(key, subKey, &made, reached);
  if (error == kDone) {
    *result = tree().open(std::move(reached), access);
    if (disposition != nullptr) {
      *disposition = made ? kCreated : kOpened;
    }
  }
  return error;
}

int deleteKey(void* key, const char* subKey) noexcept {
  const std::lock_guard<std::mutex> hold(s_guard);
  if (subKey == nullptr) {
    return kInvalidParameter;
  }
  std::shared_ptr<Key> reached;
  const Error error = reach(key, subKey, nullptr, reached);
  return error != kDone ? error : remove(reached);
}

int queryValue(void* key, const char16_t* name, unsigned int* type, unsigned char* data,
               unsigned int* dataSize) noexcept {
  if (beforeQuery != nullptr) {
    beforeQuery();
  }
  const std::lock_guard<std::mutex> hold(s_guard);
  std::shared_ptr<Key> found;
  if (const Error error = tree().find(key, kQueryValue, found); error != kDone) {
    return error;
  }
  if (data != nullptr && dataSize == nullptr) {
    return kInvalidParameter;
  }
  const auto value = found->values.find(name != nullptr ? name : u"");
  if (value == found->values.end()) {
    return kFileNotFound;
  }
  if (type != nullptr) {
    *type = value->second.type;
  }
  return copyData(value->second.data, data, dataSize);
}

int setValue(void* key, const char16_t* name, unsigned int type, const unsigned char* data,
             unsigned int dataSize) noexcept {
  const std::lock_guard<std::mutex> hold(s_guard);
  std::shared_ptr<Key> found;
  if (const Error error = tree().find(key, kSetValue, found); error != kDone) {
    return error;
  }
  if (data == nullptr && dataSize != 0) {
    return kNoAccess;
  }
  std::u16string own(name != nullptr ? name : u"");
  if (own.size() > kLongestValueName) {
    return kInvalidParameter;
  }
  found->values[std::move(own)] = {type, {data, data + dataSize}};
  return kDone;
}

int deleteValue(void* key, const char* name) noexcept {
  const std::lock_guard<std::mutex> hold(s_guard);
  std::shared_ptr<Key> found;
  if (const Error error = tree().find(key, kSetValue, found); error != kDone) {
    return error;
  }
  return found->values.erase(wideOf(name)) == 1 ? kDone : kFileNotFound;
}

int enumKeyEx(void* key, unsigned int index, char* name, unsigned int* nameSize) noexcept {
  const std::lock_guard<std::mutex> hold(s_guard);
  std::shared_ptr<Key> found;
  if (const Error error = tree().find(key, kEnumerateSubKeys, found); error != kDone) {
    return error;
  }
  const auto entry = entryAt(found->subKeys, index);
  return entry == found->subKeys.end() ? kNoMoreItems : copyName(entry->first, name, nameSize);
}

int enumKey(void* key, unsigned int index, char* name, unsigned int nameSize) noexcept {
  return enumKeyEx(key, index, name, &nameSize);
}

int enumValue(void* key, unsigned int index, char* name, unsigned int* nameSize,
              unsigned int* reserved, unsigned int* type, unsigned char* data,
              unsigned int* dataSize) noexcept {
  const std::lock_guard<std::mutex> hold(s_guard);
  std::shared_ptr<Key> found;
  if (const Error error = tree().find(key, kQueryValue, found); error != kDone) {
    return error;
  }
  if (name == nullptr || nameSize == nullptr || reserved != nullptr ||
      (data != nullptr && dataSize == nullptr)) {
    return kInvalidParameter;
  }
  const auto entry = entryAt(found->values, index);
  if (entry == found->values.end()) {
    return kNoMoreItems;
  }
  if (const Error error = copyName(entry->first, name, nameSize); error != kDone) {
    return error;
  }
  if (type != nullptr) {
    *type = entry->second.type;
  }
  return copyValue(entry->second, data, dataSize);
}

}  // namespace OsRegistry
}  // namespace LTLib::Platform
