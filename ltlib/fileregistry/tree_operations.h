// The operations on the tree by key handle, which the file backend stands on.
//
// Each loads the handle's root if that was not done, and may throw what the load throws; then it
// works under the tree's lock. A null name means the name "Default". A trailing backslash of the
// handle's path is removed. Absence is told by the result.
#ifndef LTLIB_FILEREGISTRY_TREE_OPERATIONS_H
#define LTLIB_FILEREGISTRY_TREE_OPERATIONS_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ltlib/fileregistry/tree/config_tree.h"
#include "ltlib/fileregistry/tree/roots.h"
#include "ltlib/fileregistry/tree/tree_lock.h"

namespace LTLib::detail {

/// A look at a key, which nobody changes while it lives. No other operation may be called then.
class KeyLook {
 public:
  enum class Missing { kStays, kIsAdded };

  KeyLook(QSFileKeyHandle& key, Missing sections);

  /// Whether there is a key.
  explicit operator bool() const { return m_section != nullptr; }

  /// The first field of that name, or null.
  [[nodiscard]] const QSCfgDataField* field(std::string_view name);
  /// The field or the child at a position, or null.
  [[nodiscard]] const QSCfgDataField* fieldAt(std::size_t position);
  [[nodiscard]] const QSCfgDataSection* childAt(std::size_t position);

 private:
  QSFileKeyHandle& m_key;
  TreeReading m_reading;
  const QSCfgDataSection* m_section = nullptr;

  template <class List>
  void countPlaces(List listOf);
};

[[nodiscard]] inline std::string_view orDefault(const char* name) {
  return name != nullptr ? name : "Default";
}

/// Finds a value, adding the sections of the path, and hands it to `use` in a look at its key. False
/// if there is no such field.
template <class Use>
bool cfgQueryField(QSFileKeyHandle& key, const char* name, Use use) {
  KeyLook look(key, KeyLook::Missing::kIsAdded);
  const QSCfgDataField* const field = look.field(orDefault(name));
  if (field != nullptr) {
    use(*field);
  }
  return field != nullptr;
}

/// Sets a value's text, adding sections and field as needed; an existing field keeps its type, and
/// new fields are made for strings, binaries and lists alone. The text of a list holds its items,
/// each with a backslash behind it. False, with nothing changed, if the path, the name or the text
/// has no form in a store file. A path that leads to no section stores nothing and gives true.
bool cfgSetValue(QSFileKeyHandle& key, const char* name, std::string_view text, QSCfgTypeCode code);

/// As cfgSetValue, with a number.
bool cfgSetNumber(QSFileKeyHandle& key, const char* name, std::uint32_t number);

/// Sets the default value to "0", which gives the key its place in the file.
bool cfgCreateKey(QSFileKeyHandle& key, QSCfgTypeCode code);

/// Destroys a key without children, and its fields. Adds nothing on the way.
bool cfgDeleteKey(QSFileKeyHandle& key);

/// Destroys a field, adding the sections of the path.
bool cfgDeleteField(QSFileKeyHandle& key, const char* name);

/// A decimal number at the front of a text, by the rules of atoi over 64 bits; the low 32 bits.
[[nodiscard]] std::uint32_t numberOfText(std::string_view text);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_OPERATIONS_H
