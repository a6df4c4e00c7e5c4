// What a file in another form says of a registry, whatever the form.
#ifndef LTREG_EXCHANGE_DOCUMENT_H
#define LTREG_EXCHANGE_DOCUMENT_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ltreg/registry/branch.h"
#include "ltreg/registry/difference.h"
#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/value.h"

namespace ltreg {

struct ValueEntry {
  std::string name;            // empty for the key's default value
  std::optional<Value> value;  // none where the value is to be deleted
  std::size_t line = 0;        // of the file; 0 where there is none
};

struct KeyEntry {
  KeyArgument key;  // of no root where the file does not tell it
  std::vector<ValueEntry> values;
  bool deleted = false;  // with all below it, before what follows is made
  std::size_t line = 0;
};

using Document = std::vector<KeyEntry>;

/// Where a file makes no sense. Ends the command with kBadInput.
[[noreturn]] void throwBadLine(const std::string& file, std::size_t line, const std::string& what);

/// The place in front of a message, as "FILE:LINE: "; without a line where that is 0.
[[nodiscard]] std::string placeIn(const std::string& file, std::size_t line);

/// A key's default value is named "Default" in a store file, and bears no name anywhere else. These
/// give the name that documents use, and the one that a backend does.
[[nodiscard]] std::string nameInDocument(std::string name, bool onFiles);
[[nodiscard]] std::string nameInBackend(const std::string& name, bool onFiles);

/// What lies at and below a key of a session's root, the default values without a name. Throws
/// Failure where something cannot be read.
[[nodiscard]] Branch readContent(Session& session, const std::string& path);

/// The document that makes a key out of nothing.
[[nodiscard]] Document documentOf(const KeyArgument& key, Branch branch);

/// The entries at and below a key, as ones of its root. The root that a document names counts where
/// it names several.
[[nodiscard]] Document partOf(Document document, const KeyArgument& key);

/// The document that makes the second of two branches out of the first.
[[nodiscard]] Document patchOf(const KeyArgument& top, Difference difference);

/// What a document makes below a path out of nothing, with the parents that it need not name.
[[nodiscard]] Branch branchOf(Document document, const std::string& top);

}  // namespace ltreg

#endif  // LTREG_EXCHANGE_DOCUMENT_H
