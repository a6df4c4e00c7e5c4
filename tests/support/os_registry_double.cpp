#include "tests/support/os_registry_double.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

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
};

struct Value {
  unsigned int type = 0;
  std::string bytes;
};
using Values = std::map<std::string, Value>;

// HKEY_CURRENT_USER, the one root that is there.
void* const kUser = reinterpret_cast<void*>(static_cast<std::intptr_t>(INT32_MIN + 1));

std::map<std::string, Values> s_keys{{"", {}}};  // by their whole paths
constexpr unsigned int kSetValue = 0x0002;       // the right that changes of values need

struct Handle {
  std::string path;
  unsigned int rights = 0;
};
std::map<void*, Handle> s_handles{{kUser, {}}};
std::uintptr_t s_last = 0;  // no number is given out twice, so that a closed handle stays a bad one

std::string narrowOf(const char16_t* name) {
  const std::u16string_view wide(name != nullptr ? name : u"");
  std::string narrow(utf16ToUtf8(wide.data(), wide.size(), nullptr, 0), '\0');
  (void)utf16ToUtf8(wide.data(), wide.size(), narrow.data(), narrow.size());
  return narrow;
}

// Copies a name with its terminator.
int copyName(const std::string& name, char* out, unsigned int* size) {
  if (name.size() >= *size) {
    return kMoreData;
  }
  std::copy_n(name.c_str(), name.size() + 1, out);
  *size = static_cast<unsigned int>(name.size());
  return kDone;
}

// Calls `use` with path and values of the key behind a handle, which may need a right.
template <class Use>
int withKey(void* handle, Use use, unsigned int right = 0) {
  const auto found = s_handles.find(handle);
  if (found == s_handles.end()) {
    return kInvalidHandle;
  }
  if ((found->second.rights & right) != right) {
    return kAccessDenied;
  }
  const auto key = s_keys.find(found->second.path);
  return key != s_keys.end() ? use(key->first, key->second) : kFileNotFound;
}

// Leads a path down to a sub-key, past components that are empty. Makes what is missing if `made`
// is given, which tells whether the last one was.
int walk(std::string& path, std::string_view subKey, bool* made) {
  while (!subKey.empty()) {
    const std::string_view name = subKey.substr(0, subKey.find('\\'));
    subKey.remove_prefix(std::min(subKey.size(), name.size() + 1));
    if (name.empty()) {
      continue;
    }
    path.append("\\").append(name);
    if (made != nullptr) {
      *made = s_keys.try_emplace(path).second;
    }
  }
  return s_keys.contains(path) ? kDone : kFileNotFound;
}

int open(void* key, const char* subKey, unsigned int access, bool* made, void** result) {
  return withKey(key, [&](std::string path, Values&) {
    const int error = walk(path, subKey, made);
    if (error == kDone) {
      *result = reinterpret_cast<void*>(s_last += 4);
      s_handles[*result] = {path, access};
      ++Testing::openHandles;
    }
    return error;
  });
}

// The name of a sub-key, by index; null past the last.
const char* subKeyAt(std::string path, unsigned int index) {
  path += '\\';
  for (auto key = s_keys.lower_bound(path); key != s_keys.end(); ++key) {
    if (!key->first.starts_with(path)) {
      break;
    }
    if (key->first.find('\\', path.size()) == std::string::npos && index-- == 0) {
      return key->first.c_str() + path.size();
    }
  }
  return nullptr;
}

}  // namespace

bool hasSystemRegistry() noexcept {
  return false;
}

namespace OsRegistry {

int closeKey(void* key) noexcept {
  const bool known = s_handles.erase(key) == 1;
  Testing::openHandles -= known ? 1 : 0;
  return known ? kDone : kInvalidHandle;
}

int openKey(void* key, const char* subKey, unsigned int, unsigned int access,
            void** result) noexcept {
  return open(key, subKey, access, nullptr, result);
}

int createKey(void* key, const char* subKey, void** result) noexcept {
  bool made = false;
  return open(key, subKey, kSetValue, &made, result);
}

int createKeyEx(void* key, const char* subKey, char*, unsigned int, unsigned int access,
                void** result, unsigned int* disposition) noexcept {
  bool made = false;
  const int error = open(key, subKey, access, &made, result);
  *disposition = made ? 1 : 2;
  return error;
}

int deleteKey(void* key, const char* subKey) noexcept {
  return withKey(key, [&](std::string path, Values&) -> int {
    const int error = walk(path, subKey, nullptr);
    if (error != kDone || subKeyAt(path, 0) != nullptr) {
      return error != kDone ? error : kAccessDenied;
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
  return withKey(key, [&](const std::string&, const Values& values) -> int {
    const auto found = values.find(narrowOf(name));
    if (found == values.end()) {
      return kFileNotFound;
    }
    const auto& [itsType, bytes] = found->second;
    const bool fits = data != nullptr && bytes.size() <= *dataSize;
    *type = itsType;
    *dataSize = static_cast<unsigned int>(bytes.size());
    if (fits) {
      std::copy(bytes.begin(), bytes.end(), data);
    }
    return fits || data == nullptr ? kDone : kMoreData;
  });
}

int setValue(void* key, const char16_t* name, unsigned int type, const unsigned char* data,
             unsigned int dataSize) noexcept {
  return withKey(
      key,
      [&](const std::string&, Values& values) {
        values[narrowOf(name)] = {type, {data, data + dataSize}};
        return kDone;
      },
      kSetValue);
}

int deleteValue(void* key, const char* name) noexcept {
  return withKey(
      key,
      [&](const std::string&, Values& values) {
        return values.erase(name != nullptr ? name : "") == 1 ? kDone : kFileNotFound;
      },
      kSetValue);
}

int enumKeyEx(void* key, unsigned int index, char* name, unsigned int* nameSize) noexcept {
  return withKey(key, [&](const std::string& path, Values&) -> int {
    const char* const found = subKeyAt(path, index);
    return found != nullptr ? copyName(found, name, nameSize) : kNoMoreItems;
  });
}

int enumKey(void* key, unsigned int index, char* name, unsigned int nameSize) noexcept {
  return enumKeyEx(key, index, name, &nameSize);
}

// Names alone, which is all that walks ask for.
int enumValue(void* key, unsigned int index, char* name, unsigned int* nameSize, unsigned int*,
              unsigned int*, unsigned char*, unsigned int*) noexcept {
  return withKey(key, [&](const std::string&, const Values& values) -> int {
    return index < values.size() ? copyName(std::next(values.begin(), index)->first, name, nameSize)
                                 : kNoMoreItems;
  });
}

}  // namespace OsRegistry
}  // namespace LTLib::Platform
