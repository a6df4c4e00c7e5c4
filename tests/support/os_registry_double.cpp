#include "tests/support/os_registry_double.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "ltlib/platform/os_registry.h"
#include "ltlib/platform/unicode.h"

namespace LTLib::Platform {
namespace {

enum Error : int {
  kDone = 0,
  kFileNotFound = 2,
  kAccessDenied = 5,
  kInvalidHandle = 6,
  kMoreData = 234,
  kNoMoreItems = 259,
  kKeyDeleted = 1018,
};

// What a handle may be used for, as bits of the access mask that it was opened with.
constexpr unsigned int kQueryValue = 0x0001;
constexpr unsigned int kSetValue = 0x0002;
constexpr unsigned int kEnumerateSubKeys = 0x0008;
constexpr unsigned int kAllAccess = 0xF003F;

// Orders names without regard to the case of the ASCII letters.
struct NameLess {
  static char16_t folded(char16_t unit) {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
  }
  bool operator()(std::u16string_view left, std::u16string_view right) const {
    return std::lexicographical_compare(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char16_t one, char16_t other) { return folded(one) < folded(other); });
  }
};

struct Value {
  unsigned int type = 0;
  std::string bytes;
};
using Values = std::map<std::u16string, Value, NameLess>;

struct Handle {
  std::u16string path;
  unsigned int rights = 0;
};

void* rootHandle(std::uint32_t number) {
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(static_cast<std::int32_t>(number)));
}

std::mutex s_guard;
// All keys by their whole paths, which begin with the name of a root.
std::map<std::u16string, Values, NameLess> s_keys{{u"user", {}}, {u"machine", {}}};
std::map<void*, Handle> s_handles{{rootHandle(0x80000001u), {u"user", kAllAccess}},
                                  {rootHandle(0x80000002u), {u"machine", kAllAccess}}};

std::u16string wideOf(std::string_view narrow) {
  std::u16string wide(narrow.size(), u'\0');
  wide.resize(codePageToUtf16(narrow.data(), narrow.size(), wide.data(), wide.size()));
  return wide;
}

// Copies a name with its terminator.
int copyName(std::u16string_view name, char* out, unsigned int* size) {
  const std::size_t length = utf16ToUtf8(name.data(), name.size(), nullptr, 0);
  if (length >= *size) {
    return kMoreData;
  }
  out[utf16ToUtf8(name.data(), name.size(), out, *size)] = '\0';
  *size = static_cast<unsigned int>(length);
  return kDone;
}

int copyValue(const Value& value, unsigned int* type, unsigned char* data, unsigned int* size) {
  if (type != nullptr) {
    *type = value.type;
  }
  if (size == nullptr) {
    return kDone;
  }
  const bool fits = value.bytes.size() <= *size;
  *size = static_cast<unsigned int>(value.bytes.size());
  if (data != nullptr && fits) {
    std::copy(value.bytes.begin(), value.bytes.end(), data);
  }
  return data == nullptr || fits ? kDone : kMoreData;
}

// Calls `use` with the path and the values of the key behind a handle that has the right.
template <class Use>
int withKey(void* handle, unsigned int right, Use use) {
  const std::lock_guard<std::mutex> hold(s_guard);
  const auto found = s_handles.find(handle);
  if (found == s_handles.end()) {
    return kInvalidHandle;
  }
  if ((found->second.rights & right) != right) {
    return kAccessDenied;
  }
  const auto key = s_keys.find(found->second.path);
  return key != s_keys.end() ? use(key->first, key->second) : kKeyDeleted;
}

// Leads a path down to a sub-key, each component spelt as in the key that is there; passes over
// empty ones. Makes what is missing if `made` is given, which tells whether the last one was.
int walk(std::u16string& path, const char* subKey, bool* made) {
  const std::u16string whole = wideOf(subKey);
  std::u16string_view rest = whole;
  while (!rest.empty()) {
    const std::u16string_view name = rest.substr(0, rest.find(u'\\'));
    rest.remove_prefix(std::min(rest.size(), name.size() + 1));
    if (name.empty()) {
      continue;
    }
    path.append(u"\\").append(name);
    if (made != nullptr) {
      *made = s_keys.try_emplace(path).second;
    }
    const auto key = s_keys.find(path);
    if (key == s_keys.end()) {
      return kFileNotFound;
    }
    path = key->first;
  }
  return kDone;
}

// Numbers are never given out twice, so that a handle that was closed stays a bad one.
int open(void* key, const char* subKey, unsigned int access, bool* made, void** result) {
  return withKey(key, 0, [&](std::u16string path, Values&) {
    const int error = walk(path, subKey, made);
    if (error == kDone) {
      static std::uintptr_t s_last = 0;
      *result = reinterpret_cast<void*>(s_last += 4);
      s_handles[*result] = {path, access};
    }
    return error;
  });
}

// The first of all keys from `key` on that lies below `path`.
auto firstBelow(std::u16string path) {
  path += u'\\';
  const auto first = s_keys.lower_bound(path);
  return first != s_keys.end() && first->first.starts_with(path) ? first : s_keys.end();
}

}  // namespace

bool hasSystemRegistry() noexcept {
  return false;
}

namespace OsRegistry {

int closeKey(void* key) noexcept {
  const std::lock_guard<std::mutex> hold(s_guard);
  const bool predefined = reinterpret_cast<std::intptr_t>(key) < 0;
  return predefined || s_handles.erase(key) == 1 ? kDone : kInvalidHandle;
}

int openKey(void* key, const char* subKey, unsigned int, unsigned int access,
            void** result) noexcept {
  return open(key, subKey, access, nullptr, result);
}

int createKey(void* key, const char* subKey, void** result) noexcept {
  bool made = false;
  return open(key, subKey, kAllAccess, &made, result);
}

int createKeyEx(void* key, const char* subKey, char*, unsigned int, unsigned int access,
                void** result, unsigned int* disposition) noexcept {
  bool made = false;
  const int error = open(key, subKey, access, &made, result);
  *disposition = made ? 1 : 2;
  return error;
}

int deleteKey(void* key, const char* subKey) noexcept {
  return withKey(key, 0, [&](std::u16string path, Values&) -> int {
    const int error = walk(path, subKey, nullptr);
    if (error != kDone) {
      return error;
    }
    if (firstBelow(path) != s_keys.end()) {
      return kAccessDenied;
    }
    s_keys.erase(path);
    return kDone;
  });
}

int queryValue(void* key, const char16_t* name, unsigned int* type, unsigned char* data,
               unsigned int* dataSize) noexcept {
  if (Testing::beforeQuery != nullptr) {
    Testing::beforeQuery();
  }
  return withKey(key, kQueryValue, [&](const std::u16string&, const Values& values) -> int {
    const auto value = values.find(name != nullptr ? name : u"");
    return value != values.end() ? copyValue(value->second, type, data, dataSize) : kFileNotFound;
  });
}

int setValue(void* key, const char16_t* name, unsigned int type, const unsigned char* data,
             unsigned int dataSize) noexcept {
  return withKey(key, kSetValue, [&](const std::u16string&, Values& values) {
    values[name != nullptr ? name : u""] = {type, {data, data + dataSize}};
    return kDone;
  });
}

int deleteValue(void* key, const char* name) noexcept {
  return withKey(key, kSetValue, [&](const std::u16string&, Values& values) {
    return values.erase(wideOf(name != nullptr ? name : "")) == 1 ? kDone : kFileNotFound;
  });
}

int enumKeyEx(void* key, unsigned int index, char* name, unsigned int* nameSize) noexcept {
  return withKey(key, kEnumerateSubKeys, [&](const std::u16string& path, Values&) -> int {
    const std::size_t start = path.size() + 1;
    for (auto below = firstBelow(path);
         below != s_keys.end() && below->first.starts_with(path + u'\\'); ++below) {
      if (below->first.find(u'\\', start) == std::u16string::npos && index-- == 0) {
        return copyName(std::u16string_view(below->first).substr(start), name, nameSize);
      }
    }
    return kNoMoreItems;
  });
}

int enumKey(void* key, unsigned int index, char* name, unsigned int nameSize) noexcept {
  return enumKeyEx(key, index, name, &nameSize);
}

int enumValue(void* key, unsigned int index, char* name, unsigned int* nameSize, unsigned int*,
              unsigned int* type, unsigned char* data, unsigned int* dataSize) noexcept {
  return withKey(key, kQueryValue, [&](const std::u16string&, const Values& values) -> int {
    if (index >= values.size()) {
      return kNoMoreItems;
    }
    const auto entry = std::next(values.begin(), static_cast<std::ptrdiff_t>(index));
    const int error = copyName(entry->first, name, nameSize);
    return error != kDone ? error : copyValue(entry->second, type, data, dataSize);
  });
}

}  // namespace OsRegistry
}  // namespace LTLib::Platform
