// The entries of classes in the registry, from which the loader learns a class's library.
#ifndef LTREG_COMPONENT_COMPONENT_ENTRY_H
#define LTREG_COMPONENT_COMPONENT_ENTRY_H

#include <filesystem>
#include <string>
#include <vector>

#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/session.h"

namespace ltreg {

inline constexpr char kLibraryValue[] = "InprocServer";

/// The key of all classes, and that of a class, not expanded yet. Throws Failure for an empty
/// identifier.
[[nodiscard]] KeyArgument classesKey();
[[nodiscard]] KeyArgument classKey(const std::string& id);

/// The file that a word or an entry names, and the text of a file. Texts are UTF-8; another one names
/// no file where the system has code pages, and elsewhere the file of these bytes.
[[nodiscard]] std::filesystem::path fileOf(const std::string& text);
[[nodiscard]] std::string textOf(const std::filesystem::path& file);

struct ClassEntry {
  std::string id;
  std::string library;
};

/// The classes below a key, in its order, as far as they have an entry that the loader can read.
[[nodiscard]] std::vector<ClassEntry> classesBelow(Session& session, const std::string& path);

}  // namespace ltreg

#endif  // LTREG_COMPONENT_COMPONENT_ENTRY_H
