// Taking what one reading of a store file brought into the tree of its root.
#ifndef LTLIB_FILEREGISTRY_STORE_LOAD_MERGE_H
#define LTLIB_FILEREGISTRY_STORE_LOAD_MERGE_H

#include <memory>

#include "ltlib/fileregistry/tree/config_tree.h"
#include "ltlib/fileregistry/tree/roots.h"

namespace LTLib::detail {

/// Brings what was read into the root's tree. A reading that failed is repeated at the next touch: of
/// a name's fields in a section only those are taken of which no earlier reading brought as many, so
/// that nothing comes double, nothing that was deleted since comes back, and later repairs of the
/// file get in. Where memory runs out the tree stays as it is, and what was read is lost.
void takeOverReading(QSCfgRoot& root, std::unique_ptr<QSCfgTree> read, bool whole);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_STORE_LOAD_MERGE_H
