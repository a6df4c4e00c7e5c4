// Reading and replacing the store file of a root.
#ifndef LTLIB_FILEREGISTRY_STORE_STORE_H
#define LTLIB_FILEREGISTRY_STORE_STORE_H

#include <string>

#include "ltlib/fileregistry/store/store_reload.h"
#include "ltlib/fileregistry/text/text_reader.h"
#include "ltlib/fileregistry/tree/roots.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/registry/registry_manager.h"

namespace LTLib::detail {

/// Reads a store file into the root's tree. A file that cannot be opened reads as empty. Throws
/// QSException "registry read failed", and what the locks throw. Requires: the tree's lock is held.
[[nodiscard]] ReadResult cfgLoadFile(QSCfgRoot& root, const std::string& pathname);

/// Makes the root sections, and reads the root's store file unless that was done. A root whose
/// variable names no file stays empty. Throws as cfgLoadFile does.
void cfgEnsureLoaded(const QSFileKeyHandle& key);

/// Replaces the store file by the root's present tree: 0, or 0x80004005 with nothing changed. An
/// empty `pathname` becomes the root's default file name.
[[nodiscard]] QSResult cfgSaveFile(enumRegRoot root, std::string& pathname);

/// What reloadStore does on files.
[[nodiscard]] QSResult cfgReloadFile(enumRegRoot root, UnsavedChanges unsaved);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_STORE_STORE_H
