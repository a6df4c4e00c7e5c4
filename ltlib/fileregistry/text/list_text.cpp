// A backslash ends an item in one form, joins lines in another and is an item's own byte in neither:
// lists lose it, as they lose commas and quotes.
#include "ltlib/fileregistry/text/list_text.h"

#include <algorithm>

namespace LTLib::detail {
namespace {

constexpr std::string_view kSeparator = "\",\\\n\"";
// What the reader joins lines by.
constexpr std::string_view kLineBreak = "\\\n";

}  // namespace

// The list's own NUL, the last byte, stays one and ends the text; each item's becomes a backslash.
std::string joinListItems(const char* bytes, std::size_t size) {
  std::string joined(bytes, size);
  if (size > 1) {
    std::replace(joined.begin(), joined.end() - 1, '\0', '\\');
  }
  return joined.substr(0, joined.find('\0'));
}

std::string quoteListItems(std::string_view items) {
  if (!items.empty()) {
    items.remove_suffix(1);
  }
  std::string quoted = "\"";
  for (const char byte : items) {
    if (byte == '\\') {
      quoted += kSeparator;
    } else {
      quoted += byte;
    }
  }
  return quoted += '"';
}

std::string joinListLines(std::string_view text) {
  std::string joined;
  joined.reserve(text.size());
  for (std::size_t end = text.find(kLineBreak); end != std::string_view::npos;
       end = text.find(kLineBreak)) {
    joined += text.substr(0, end);
    text.remove_prefix(end + kLineBreak.size());
  }
  return joined += text;
}

std::string unquoteListItems(std::string_view text) {
  // The separator as it stands once its comma has become a backslash and the quotes are out: the whole
  // of it parts two items, as a single backslash does in a list that a file brought.
  constexpr std::string_view kSeparatorWithoutQuotes = "\\\\\n";
  std::string bare;
  bare.reserve(text.size());
  std::copy_if(text.begin(), text.end(), std::back_inserter(bare),
               [](char byte) { return byte != '"'; });
  std::string items;
  items.reserve(bare.size());
  for (std::size_t i = 0; i < bare.size(); ++i) {
    if (bare.compare(i, kSeparatorWithoutQuotes.size(), kSeparatorWithoutQuotes) == 0) {
      i += kSeparatorWithoutQuotes.size() - 1;
      items += '\0';
    } else {
      items += bare[i] == '\\' ? '\0' : bare[i];
    }
  }
  return items;
}

bool holdSameItems(std::string_view left, std::string_view right) {
  const auto itemsOf = [](std::string_view text) {
    std::string parted(text);
    std::replace(parted.begin(), parted.end(), ',', '\\');
    return unquoteListItems(parted);
  };
  return itemsOf(left) == itemsOf(right);
}

}  // namespace LTLib::detail
