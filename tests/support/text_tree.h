// Trees of the file registry as texts: read from one, written to one, and shown as one.
#ifndef LTLIB_TESTS_SUPPORT_TEXT_TREE_H
#define LTLIB_TESTS_SUPPORT_TEXT_TREE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ltlib/fileregistry/tree/config_tree.h"

namespace LTLib::Testing {

/// What one reading of a text gave.
struct Reading {
  std::unique_ptr<QSCfgTree> tree;
  std::string end;  // "whole", "bad header" or "parse error"
  std::string messages;
  std::uint16_t lineCount = 0;
};

/// Reads a text as that of a store file, handed over in pieces of so many bytes.
[[nodiscard]] Reading readText(std::string_view text, std::size_t pieceSize = std::string::npos);

/// The text that a store file of this tree holds, or nothing if the writer refuses the tree.
[[nodiscard]] std::optional<std::string> writeText(const QSCfgTree& tree);

/// A line "path|name|code|text" for each field and "path" for each section without fields, in tree
/// order; components parted by slashes, line feeds shown as a bar with an n.
[[nodiscard]] std::string showTree(const QSCfgTree& tree);

/// The same without the sections that have no fields, which leave no trace in a store file.
[[nodiscard]] std::string showFields(const QSCfgTree& tree);

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_TEXT_TREE_H
