// Trees as texts: read from one, and shown as one.
#ifndef LTLIB_TESTS_SUPPORT_TEXT_TREE_H
#define LTLIB_TESTS_SUPPORT_TEXT_TREE_H

#include <memory>
#include <string>
#include <string_view>

#include "ltlib/fileregistry/config_tree.h"
#include "ltlib/fileregistry/text_reader.h"

namespace LTLib::Testing {

/// What one reading of a text gave.
struct Reading {
  std::unique_ptr<QSCfgDataSection> root;
  detail::ReadResult result = detail::ReadResult::kWhole;
  bool threw = false;
  std::string messages;
  std::uint16_t lineCount = 0;
};

[[nodiscard]] Reading readText(std::string_view text);

/// A line "path|name|code|text" for each field and "path" for each section without fields, in tree
/// order; components parted by slashes, line feeds shown as a bar with an n.
[[nodiscard]] std::string showTree(const QSCfgDataSection& root);

/// The text that a store file of this tree holds.
[[nodiscard]] std::string writeText(const QSCfgDataSection& root);

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_TEXT_TREE_H
