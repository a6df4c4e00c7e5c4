// Whether a name or a text has a form in a store file from which it comes back as it was.
//
// The format has no escapes. What has no form is refused when it is set, and a save that would
// have to write it is refused as a whole, so that no store file is ever written that does not
// load.
#ifndef LTLIB_FILEREGISTRY_TEXT_FILE_FORM_H
#define LTLIB_FILEREGISTRY_TEXT_FILE_FORM_H

#include <string_view>
#include <vector>

#include "ltlib/fileregistry/tree/config_tree.h"

namespace LTLib::detail {

/// Whether the header of a section with these names, from the root's child down, names it again.
[[nodiscard]] bool headerComesBack(const std::vector<std::string_view>& names);

/// The same of a section. The answer is kept in the section, so that this needs the lock of a change.
[[nodiscard]] bool sectionComesBack(QSCfgDataSection& section);

/// Whether the line of a field brings back its name, type code and text. A list may come back with
/// its lines joined, if it holds the same items then.
[[nodiscard]] bool fieldComesBack(std::string_view name, QSCfgTypeCode code, std::string_view text);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TEXT_FILE_FORM_H
