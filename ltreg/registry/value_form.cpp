// These rules say ahead of time, and in words, what the library would refuse without any. They are never
// wider than its own: what slips through here is refused there.
#include "ltreg/registry/value_form.h"

#include "ltlib/ltlib.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/key_argument.h"

namespace ltreg {
namespace {

std::string whyNoItem(const std::string& item) {
  if (item.find_first_of(",\\\"\n") != std::string::npos) {
    return "the list item " + inQuotes(item) +
           " holds a comma, backslash, double quote or line feed, at which a store file would"
           " split or change it; use another character";
  }
  return {};
}

}  // namespace

std::string whyNoKeyForm(std::string_view path) {
  if (path.empty()) {
    return "a root holds no values; give a key, at least two components below the root";
  }
  if (path.find('\\') == std::string_view::npos) {
    return "a key right below its root holds no values in a store file; go one component deeper, as"
           " in 'HKLM\\Software\\Demo'";
  }
  if (path.find('\n') != std::string_view::npos) {
    return "a key cannot hold a line feed in a store file; use another character";
  }
  if (lastComponent(path).find(']') != std::string_view::npos) {
    return "the last component of a key cannot hold ']', which ends a header of a store file; use"
           " another character";
  }
  return {};
}

std::string whyNoNameForm(std::string_view name) {
  if (name.empty()) {
    return "a value's name cannot be empty; the default value is named 'Default'";
  }
  if (name.find_first_of("\"\n") != std::string_view::npos) {
    return "the name " + inQuotes(name) +
           " holds a double quote or line feed, which no name in a store file can; use another"
           " character";
  }
  return {};
}

std::string whyNoValueForm(unsigned int type, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    if (type == REG_MULTI_SZ) {
      if (std::string why = whyNoItem(word); !why.empty()) {
        return why;
      }
    } else if (word.find('\0') != std::string::npos) {
      return "the value holds a NUL, at which a store file would end it";
    } else if (word.find('\n') != std::string::npos) {
      return "the value holds a line feed, which ends a line of a store file; use a list for"
             " several lines";
    } else if (type == REG_BINARY && word.ends_with('\\')) {
      return "a binary value cannot end in a backslash, which would continue it on the next line"
             " of a store file; use a string";
    }
  }
  return {};
}

}  // namespace ltreg
