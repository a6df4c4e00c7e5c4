// The three forms of a list of texts: the caller's bytes, the tree's text and the joined text.
#ifndef LTLIB_FILEREGISTRY_TEXT_LIST_TEXT_H
#define LTLIB_FILEREGISTRY_TEXT_LIST_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace LTLib::detail {

/// From items that end in NUL, and the list in one more, to items that end in a backslash.
[[nodiscard]] std::string joinListItems(const char* bytes, std::size_t size);

/// From items that end in a backslash to quoted items, each on a line of its own, as the tree and
/// the store file hold them.
[[nodiscard]] std::string quoteListItems(std::string_view items);

/// The text with its line breaks taken out, as it comes back from a store file.
[[nodiscard]] std::string joinListLines(std::string_view text);

/// From either form that the tree may hold, with backslashes in place of commas, to items
/// separated by NUL.
[[nodiscard]] std::string unquoteListItems(std::string_view text);

/// Whether two texts that the tree may hold stand for the same items.
[[nodiscard]] bool holdSameItems(std::string_view left, std::string_view right);

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TEXT_LIST_TEXT_H
