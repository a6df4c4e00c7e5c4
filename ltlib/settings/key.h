/// \file
/// \brief A key of the registry whose values are read and written by their types.
///
///   LTLib::Key net(LTLib::Root::kLocalMachine, "%SharedRoot%\\Net");
///   net.set("Port", 8080);
///   int port = net.get("Port", 80);                    // 80 where there is none
///   std::optional<int> limit = net.get<int>("Limit");  // empty where there is none
///
/// Threads: an object belongs to one thread at a time; several may name one key.
///
/// Ownership: an object keeps a root and a path, and nothing open between two operations. Texts and
/// bytes that come back are the caller's own.
///
/// Failure: absence is no failure, but an empty result. All else throws SettingsError; the forms
/// with a std::error_code set that instead, clear it on success, and let std::bad_alloc alone pass. A
/// failed operation changes nothing.
///
/// On files all is in the memory of this process until SaveConfiguration, or within a Transaction its
/// commit. There a key right below a root holds no values and cannot be listed, which `set` tells by
/// kNoForm; so it does where a file would keep something else than what was given: bytes that hold
/// a NUL, and lists whose items hold a comma, a backslash or a double quote.
#ifndef LTLIB_SETTINGS_KEY_H
#define LTLIB_SETTINGS_KEY_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "ltlib/registry/registry_manager.h"
#include "ltlib/settings/error.h"
#include "ltlib/settings/value.h"
#include "ltlib/variables/variable_manager.h"

namespace LTLib {

/// The roots of the registry.
enum class Root : std::int32_t {
  kCurrentUser = REG_ROOT_CURRENT_USER,
  kCurrentConfig = REG_ROOT_CURRENT_CONFIG,
  kUsers = REG_ROOT_USERS,
  kClasses = REG_ROOT_CLASSES_ROOT,
  kLocalMachine = REG_ROOT_LOCAL_MACHINE,
};

/// The name of a value, as a parameter alone: it borrows the text. An empty name is that of the key's
/// default value.
class Name {
 public:
  explicit(false) Name(const char* text) : m_text(text != nullptr ? text : "") {}
  explicit(false) Name(const std::string& text) : m_held(), m_text(text.c_str()) {
    m_isWhole = text.find('\0') == std::string::npos;
  }
  explicit(false) Name(std::string_view text) : m_held(text), m_text(m_held.c_str()) {
    m_isWhole = text.find('\0') == std::string_view::npos;
  }
  /// A buffer is no name: it may be meant as the value, and need not be terminated.
  template <std::size_t N>
  explicit(false) Name(char (&buffer)[N]) = delete;
  explicit(false) Name(std::nullptr_t) = delete;
  Name(const Name&) = delete;
  Name& operator=(const Name&) = delete;

  /// Null for the default value.
  [[nodiscard]] const char* text() const { return *m_text != '\0' ? m_text : nullptr; }
  /// Whether the text holds no NUL, which would end it early.
  [[nodiscard]] bool isWhole() const { return m_isWhole; }

 private:
  std::string m_held;
  const char* m_text;
  bool m_isWhole = true;
};

/// What is to be written, as a parameter alone: any setting's type, a text, a list in braces, or bytes.
class NewValue {
 public:
  template <SettingType T>
  explicit(false) NewValue(const T& value) : m_result(detail::encode(value, m_stored)) {}
  explicit(false) NewValue(std::string_view text) : m_result(detail::writeText(text, m_stored)) {}
  explicit(false) NewValue(const char* text)
      : m_result(text != nullptr ? detail::writeText(text, m_stored) : detail::kNoFormCode) {}
  explicit(false) NewValue(std::initializer_list<std::string_view> items)
      : m_result(detail::writeList(items, m_stored)) {}
  template <std::convertible_to<std::span<const std::byte>> Range>
  requires(!SettingType<Range>) explicit(false) NewValue(const Range& bytes)
      : m_result(detail::writeBytes(bytes, m_stored)) {}
  /// A buffer may be bytes or a text, and need not be terminated.
  template <std::size_t N>
  explicit(false) NewValue(char (&buffer)[N]) = delete;
  explicit(false) NewValue(std::nullptr_t) = delete;

  [[nodiscard]] const RegistryValue& stored() const { return m_stored; }
  [[nodiscard]] QSResult result() const { return m_result; }

 private:
  RegistryValue m_stored;
  QSResult m_result;
};

namespace detail {

inline constexpr int kFilesRefuse = -1;

/// A key that is open for the length of one operation.
class OpenedKey {
 public:
  OpenedKey(Root root, const std::string& path, int access) {
    if (m_manager != nullptr) {
      m_result = m_manager->regOpenKeyEx(handleOf(root), path.c_str(), 0, access, &m_handle);
    }
  }
  ~OpenedKey() {
    if (m_handle != nullptr) {
      m_manager->regCloseKey(m_handle);
    }
  }
  OpenedKey(const OpenedKey&) = delete;
  OpenedKey& operator=(const OpenedKey&) = delete;

  /// Makes the key if it could not be opened.
  void create(Root root, const std::string& path) {
    unsigned int disposition = 0;
    if (m_manager != nullptr && m_result != 0) {
      m_result = m_manager->regCreateKeyEx(handleOf(root), path.c_str(), nullptr, 0, KEY_ALL_ACCESS,
                                           &m_handle, &disposition);
    }
  }

  [[nodiscard]] static void* handleOf(Root root) {
    return predefinedRootHandle(static_cast<enumRegRoot>(root));
  }
  [[nodiscard]] QSResult result() const {
    return m_manager != nullptr ? resultFromSystemError(m_result) : kFailure;
  }
  [[nodiscard]] void* handle() const { return m_handle; }
  [[nodiscard]] QSRegistryManagerImpl& manager() const { return *m_manager; }

 private:
  // Every instance derives from it.
  QSRegistryManagerImpl* m_manager =
      static_cast<QSRegistryManagerImpl*>(QSRegistryManager::GetInstance());
  void* m_handle = nullptr;
  int m_result = 0;
};

/// Whether files serve, which alone refuse this operation by that number.
[[nodiscard]] inline bool filesServe(QSRegistryManager& manager, Root root) {
  char name = '\0';
  return manager.regEnumKey(OpenedKey::handleOf(root), 0, &name, 0) == kFilesRefuse;
}

/// Whether a path has its place in a file: at least two names.
[[nodiscard]] inline bool hasPlaceInFile(std::string_view path) {
  const std::size_t end = path.find('\\');
  return end != std::string_view::npos && end != 0;
}

[[nodiscard]] inline bool staysInFile(const RegistryValue& value) {
  return value.type == REG_BINARY     ? value.bytes.find('\0') == std::string::npos
         : value.type == REG_MULTI_SZ ? value.bytes.find_first_of(",\\\"") == std::string::npos
                                      : true;
}

/// Reads a value: 0, kAbsentCode, or a failure.
inline QSResult readStored(Root root, const std::string& path, const char* name,
                           RegistryValue& value) {
  const OpenedKey key(root, path, KEY_READ);
  if (key.result() < 0) {
    return key.result();
  }
  const int result = key.manager().queryWholeValue(key.handle(), name, value);
  return result == kFilesRefuse ? kAbsentCode : resultFromSystemError(result);
}

inline int setStored(const OpenedKey& key, const char* name, const RegistryValue& value) {
  return key.manager().regSetValueEx(key.handle(), name, value.type,
                                     reinterpret_cast<const unsigned char*>(value.bytes.data()),
                                     static_cast<unsigned int>(value.bytes.size()));
}

// In a file a value that is there keeps its type, so that one of another type has to go first. It comes
// back where the new one is refused.
inline int setInFile(const OpenedKey& key, const char* name, const RegistryValue& value) {
  RegistryValue former;
  const bool wasThere = key.manager().queryWholeValue(key.handle(), name, former) == 0;
  if (!wasThere || former.type == value.type) {
    return setStored(key, name, value);
  }
  (void)key.manager().regDeleteValue(key.handle(), name);
  const int result = setStored(key, name, value);
  if (result != 0) {
    if (former.type != REG_DWORD && former.type != REG_BINARY) {
      former.bytes.append(2, '\0');  // terminators, which a file's values come without
    }
    (void)setStored(key, name, former);
  }
  return result;
}

inline QSResult writeStored(Root root, const std::string& path, const char* name,
                            const RegistryValue& value) {
  OpenedKey key(root, path, KEY_ALL_ACCESS);
  key.create(root, path);
  if (key.result() < 0) {
    return key.result();
  }
  if (value.bytes.size() > std::numeric_limits<std::int32_t>::max()) {
    return kNoFormCode;
  }
  if (!filesServe(key.manager(), root)) {
    return resultFromSystemError(setStored(key, name, value));
  }
  const bool kept = hasPlaceInFile(path) && staysInFile(value) && setInFile(key, name, value) == 0;
  return kept ? kSuccess : kNoFormCode;
}

/// Asks for a name by its index: 0, kAbsentCode past the last one, or a failure. `fetch` calls the
/// manager. A file tells the whole length of a name that was cut, the system only that it was.
template <class Fetch>
QSResult nameAt(Root root, const std::string& path, unsigned int index, std::string& name,
                Fetch fetch) {
  constexpr int kMoreData = 234;
  constexpr int kNoMore = 259;
  constexpr std::size_t kLongest = std::size_t{1} << 26;
  const OpenedKey key(root, path, KEY_READ);
  if (key.result() < 0) {
    return key.result();
  }
  for (std::size_t capacity = 256; capacity <= kLongest; capacity *= 4) {
    name.resize(capacity);
    auto size = static_cast<unsigned int>(capacity);
    const int result = fetch(key.manager(), key.handle(), index, name.data(), &size);
    if (result == 0 && size < capacity) {
      name.resize(size);
      return kSuccess;
    }
    if (result == kFilesRefuse || result == kNoMore) {
      return kAbsentCode;
    }
    if (result != 0 && result != kMoreData) {
      return resultFromSystemError(result);
    }
  }
  return kNoFormCode;
}

inline int fetchKeyName(QSRegistryManager& manager, void* key, unsigned int index, char* name,
                        unsigned int* size) {
  return manager.regEnumKeyEx(key, index, name, size);
}

inline int fetchValueName(QSRegistryManager& manager, void* key, unsigned int index, char* name,
                          unsigned int* size) {
  return manager.regEnumValue(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
}

/// Whether there is a key, and on files anything in it: 0, kAbsentCode, or a failure.
inline QSResult findKey(Root root, const std::string& path) {
  {
    const OpenedKey key(root, path, KEY_READ);
    if (key.result() < 0 || !filesServe(key.manager(), root)) {
      return key.result();
    }
  }
  std::string name;
  const QSResult value = nameAt(root, path, 0, name, fetchValueName);
  return value == kAbsentCode ? nameAt(root, path, 0, name, fetchKeyName) : value;
}

/// Deletes a key and all below it, the deepest ahead; names are taken as they stand.
inline QSResult eraseBranch(Root root, std::string path) {
  QSRegistryManager* const manager = QSRegistryManager::GetInstance();
  if (manager == nullptr) {
    return kFailure;
  }
  const std::size_t top = path.size();
  std::string name;
  for (;;) {
    const QSResult child = nameAt(root, path, 0, name, fetchKeyName);
    if (child == kSuccess) {
      path.append("\\").append(name);
      continue;
    }
    if (child != kAbsentCode) {
      return child;
    }
    const int deleted = manager->regDeleteKey(OpenedKey::handleOf(root), path.c_str());
    if (path.size() == top) {
      return deleted == kFilesRefuse ? kAbsentCode : resultFromSystemError(deleted);
    }
    if (deleted != 0) {
      return deleted == kFilesRefuse ? kFailure : resultFromSystemError(deleted);
    }
    path.resize(path.rfind('\\'));
  }
}

}  // namespace detail

class SubkeyView;
class ValueView;
class BranchView;

/// A key by its root and path. It need not exist: the first `set` makes it.
class Key {
 public:
  /// References to variables, as "%SharedRoot%", are replaced here, once and for all. One that cannot
  /// be replaced is a failure, and leaves the path with it.
  Key(Root root, std::string_view path) : Key(root, path, nullptr) {}
  Key(Root root, std::string_view path, std::error_code& code) : Key(root, path, &code) {}

  [[nodiscard]] Root root() const { return m_root; }
  [[nodiscard]] const std::string& path() const { return m_path; }
  /// The last name of the path.
  [[nodiscard]] std::string_view name() const {
    return std::string_view(m_path).substr(m_path.rfind('\\') + 1);
  }

  /// The key below this one; `below` may be several names, and hold references.
  [[nodiscard]] Key operator/(std::string_view below) const {
    return {m_root, m_path.empty() ? std::string(below) : m_path + '\\' + std::string(below)};
  }

  bool operator==(const Key& other) const = default;

  /// A value; empty where there is none. Another type or range is a failure.
  template <SettingType T>
  [[nodiscard]] std::optional<T> get(const Name& name) const {
    return fetch<T>(name, nullptr);
  }
  template <SettingType T>
  [[nodiscard]] std::optional<T> get(const Name& name, std::error_code& code) const {
    return fetch<T>(name, &code);
  }

  /// A value, or `fallback` where there is none; with a code also where it cannot be had.
  template <SettingType T>
  [[nodiscard]] T get(const Name& name, const T& fallback) const {
    return fetch<T>(name, nullptr).value_or(fallback);
  }
  template <SettingType T>
  [[nodiscard]] T get(const Name& name, const T& fallback, std::error_code& code) const {
    return fetch<T>(name, &code).value_or(fallback);
  }
  [[nodiscard]] std::string get(const Name& name, const char* fallback) const {
    return fetch<std::string>(name, nullptr).value_or(fallback);
  }
  [[nodiscard]] std::string get(const Name& name, const char* fallback,
                                std::error_code& code) const {
    return fetch<std::string>(name, &code).value_or(fallback);
  }

  /// Writes a value, whatever was there, and makes the key if need be.
  void set(const Name& name, const NewValue& value) const { store(name, value, nullptr); }
  void set(const Name& name, const NewValue& value, std::error_code& code) const {
    store(name, value, &code);
  }

  /// Deletes a value: whether it was there.
  bool erase(const Name& name) const { return eraseValue(name, nullptr); }
  bool erase(const Name& name, std::error_code& code) const { return eraseValue(name, &code); }

  /// Deletes the key with its values and all keys below it: whether it was there.
  bool eraseAll() const { return eraseKey(nullptr); }
  bool eraseAll(std::error_code& code) const { return eraseKey(&code); }

  /// Whether there is a value of that name, of any type.
  [[nodiscard]] bool contains(const Name& name) const { return hasValue(name, nullptr); }
  [[nodiscard]] bool contains(const Name& name, std::error_code& code) const {
    return hasValue(name, &code);
  }

  /// Whether the key is there; on files, whether it has a value or a sub-key.
  [[nodiscard]] bool exists() const { return isThere(nullptr); }
  [[nodiscard]] bool exists(std::error_code& code) const { return isThere(&code); }

  /// Ranges over what the key has, and over all keys below it; ltlib/settings/walk.h tells of them.
  /// With a code, which has to outlive the range, a failure ends a walk instead of throwing.
  [[nodiscard]] ValueView values() const;
  [[nodiscard]] ValueView values(std::error_code& code) const;
  [[nodiscard]] SubkeyView subkeys() const;
  [[nodiscard]] SubkeyView subkeys(std::error_code& code) const;
  [[nodiscard]] BranchView branch() const;
  [[nodiscard]] BranchView branch(std::error_code& code) const;

  /// The child of exactly that name, in which nothing is replaced.
  [[nodiscard]] Key child(std::string_view name) const {
    Key made(*this);
    made.m_path.append(m_path.empty() ? "" : "\\").append(name);
    return made;
  }

 private:
  Key(Root root, std::string_view path, std::error_code* code) : m_root(root), m_path(path) {
    detail::Failure failure;
    detail::attempt(failure, [&] { return QSExpandString(m_path); });
    if (failure && failure.words.empty()) {
      failure = {detail::kNoFormCode, "a reference in it cannot be replaced"};
    }
    if (m_path.find('\0') != std::string::npos) {
      failure = {detail::kNoFormCode, "it holds a NUL"};
    }
    if (m_path.ends_with('\\')) {
      m_path.pop_back();
    }
    detail::report(failure, "the path " + m_path, code);
  }

  [[nodiscard]] std::string place(const char* name) const {
    const char* const root = registryRootName(static_cast<enumRegRoot>(m_root));
    std::string text = root != nullptr ? root : "";
    text.append("\\").append(m_path);
    return name != nullptr ? text.append(", value ").append(name) : text;
  }

  // Runs an operation on a value: 0, or absence, which is no failure. Whether it was there.
  template <class Use>
  bool perform(const Name& name, std::error_code* code, Use use) const {
    detail::Failure failure;
    detail::attempt(failure, [&] { return name.isWhole() ? use() : detail::kNoFormCode; });
    const bool absent = failure.result == detail::kAbsentCode;
    if (code != nullptr || (failure && !absent)) {
      detail::report(absent ? detail::Failure() : failure, place(name.text()), code);
    }
    return failure.result >= 0;
  }

  template <class T>
  std::optional<T> fetch(const Name& name, std::error_code* code) const {
    std::optional<T> out(std::in_place);
    const bool got = perform(name, code, [&] {
      RegistryValue value;
      const QSResult result = detail::readStored(m_root, m_path, name.text(), value);
      return result < 0 ? result : detail::decode(value, *out);
    });
    if (!got) {
      out.reset();
    }
    return out;
  }

  void store(const Name& name, const NewValue& value, std::error_code* code) const {
    (void)perform(name, code, [&] {
      return value.result() < 0 ? value.result()
                                : detail::writeStored(m_root, m_path, name.text(), value.stored());
    });
  }

  bool hasValue(const Name& name, std::error_code* code) const {
    return perform(name, code, [&] {
      RegistryValue value;
      return detail::readStored(m_root, m_path, name.text(), value);
    });
  }

  bool eraseValue(const Name& name, std::error_code* code) const {
    return perform(name, code, [&] {
      const detail::OpenedKey key(m_root, m_path, KEY_ALL_ACCESS);
      if (key.result() < 0) {
        return key.result();
      }
      const int result = key.manager().regDeleteValue(key.handle(), name.text());
      return result == detail::kFilesRefuse ? detail::kAbsentCode : resultFromSystemError(result);
    });
  }

  // A mere look may have made a key of a file that has nothing in it: that goes, and counts as absent.
  bool eraseKey(std::error_code* code) const {
    return perform("", code, [&] {
      const QSResult there = detail::findKey(m_root, m_path);
      const QSResult erased = detail::eraseBranch(m_root, m_path);
      return erased < 0 ? erased : there;
    });
  }

  bool isThere(std::error_code* code) const {
    return perform("", code, [&] { return detail::findKey(m_root, m_path); });
  }

  Root m_root;
  std::string m_path;
};

}  // namespace LTLib

#endif  // LTLIB_SETTINGS_KEY_H
