// The operations on the tree by key handle, which the file backend stands on.
//
// Each loads the handle's root if that was not done, and may throw what the load throws; then it
// works under the tree's lock. A null name means the name "Default". A trailing backslash of the
// handle's path is removed. Absence is told by the result.
#ifndef LTLIB_FILEREGISTRY_TREE_OPERATIONS_H
#define LTLIB_FILEREGISTRY_TREE_OPERATIONS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ltlib/fileregistry/tree/config_tree.h"
#include "ltlib/fileregistry/tree/roots.h"

namespace LTLib::detail {

/// What a query tells of a field; `size` counts the stored text without a terminator.
struct QSCfgFieldInfo {
  QSCfgTypeCode type = kCfgULong;
  std::size_t size = 0;
};

/// Finds a value, adding the sections of the path. With `text`, a copy goes there, in a list with
/// backslashes in place of commas. False if there is no such field.
bool cfgQueryValue(QSFileKeyHandle& key, const char* name, QSCfgFieldInfo& info, std::string* text);

/// As cfgQueryValue, and reads the text as a number, whatever its type.
bool cfgQueryNumber(QSFileKeyHandle& key, const char* name, std::uint32_t& number);

/// Sets a value's text, adding sections and field as needed; an existing field keeps its type, and
/// new fields are made for strings, binaries and lists alone. The text of a list holds its items,
/// each with a backslash behind it. False, with nothing changed, if the path, the name or the text
/// has no form in a store file. A path that leads to no section stores nothing and gives true.
bool cfgSetValue(QSFileKeyHandle& key, const char* name, std::string_view text, QSCfgTypeCode code);

/// As cfgSetValue, with a number.
bool cfgSetNumber(QSFileKeyHandle& key, const char* name, std::uint32_t number);

/// Sets the default value to "0", which gives the key its place in the file.
bool cfgCreateKey(QSFileKeyHandle& key, QSCfgTypeCode code);

/// The names of a key's children or fields, in tree order. False if the key does not exist.
bool cfgListSections(QSFileKeyHandle& key, std::vector<std::string>& names);
bool cfgListFields(QSFileKeyHandle& key, std::vector<std::string>& names);

/// The one name at a position of these lists. False if the key does not exist or ends before it.
bool cfgSectionName(QSFileKeyHandle& key, std::size_t position, std::string& name);
bool cfgFieldName(QSFileKeyHandle& key, std::size_t position, std::string& name);

/// Destroys a key without children, and its fields. Adds nothing on the way.
bool cfgDeleteKey(QSFileKeyHandle& key);

/// Destroys a field, adding the sections of the path.
bool cfgDeleteField(QSFileKeyHandle& key, const char* name);

/// A decimal number at the front of a text, by the rules of atoi over 64 bits; the low 32 bits.
[[nodiscard]] std::uint32_t numberOfText(std::string_view text);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_OPERATIONS_H
