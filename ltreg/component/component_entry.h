// The entries of classes in the registry, from which the loader learns a class's library.
#ifndef LTREG_COMPONENT_COMPONENT_ENTRY_H
#define LTREG_COMPONENT_COMPONENT_ENTRY_H

#include <string>
#include <vector>

#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/session.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {

inline constexpr char kLibraryValue[] = "InprocServer";

/// The key of all classes, and that of a class, not expanded yet. Throws Failure for an empty
/// identifier.
[[nodiscard]] KeyArgument classesKey();
[[nodiscard]] KeyArgument classKey(const std::string& id);

struct ClassEntry {
  std::string id;
  Value value;  // a string names the library; the loader reads nothing else
};

/// Whether the entry names a file of a place of its own, and there is none.
[[nodiscard]] bool isLibraryGone(const Value& entry);

/// The classes below a key, in its order.
[[nodiscard]] std::vector<ClassEntry> classesBelow(Session& session, const std::string& path);

}  // namespace ltreg

#endif  // LTREG_COMPONENT_COMPONENT_ENTRY_H
