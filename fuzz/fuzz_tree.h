// Trees of the file registry for fuzz targets: read from a text, written to one, and shown.
#ifndef LTLIB_FUZZ_FUZZ_TREE_H
#define LTLIB_FUZZ_FUZZ_TREE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ltlib/fileregistry/config_tree.h"

namespace LTLib::Fuzzing {

/// What one reading of a text gave.
struct Reading {
  std::unique_ptr<QSCfgDataSection> root;
  bool whole = false;  // neither a bad header nor a parse error
};

/// Reads a text, handed over in pieces of that many bytes.
[[nodiscard]] Reading readTree(std::string_view text, std::size_t pieceSize = std::string::npos);

/// The text of the store file, or nothing if the writer refuses the tree.
[[nodiscard]] std::optional<std::string> writeTree(const QSCfgDataSection& root);

/// Every field with its section's names, code and text, in tree order. Sections without fields
/// leave no trace, as in a store file.
[[nodiscard]] std::string showFields(const QSCfgDataSection& root);

/// Ends the process with that text unless the condition holds.
void demand(bool holds, const char* text);

}  // namespace LTLib::Fuzzing

#endif  // LTLIB_FUZZ_FUZZ_TREE_H
