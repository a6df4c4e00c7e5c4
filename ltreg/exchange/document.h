// What a file in another form says of a registry, whatever the form.
#ifndef LTREG_EXCHANGE_DOCUMENT_H
#define LTREG_EXCHANGE_DOCUMENT_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/value.h"

namespace ltreg {

struct ValueEntry {
  std::string name;            // empty for the default value of the operating system's registry
  std::optional<Value> value;  // none where the value is to be deleted
  std::size_t line = 0;        // of the file; 0 where there is none
};

struct KeyEntry {
  KeyArgument key;
  std::vector<ValueEntry> values;
  bool deleted = false;  // with all below it, before what follows is made
  std::size_t line = 0;
};

using Document = std::vector<KeyEntry>;

/// Where a file makes no sense. Ends the command with kBadInput.
[[noreturn]] void throwBadLine(const std::string& file, std::size_t line, const std::string& what);

}  // namespace ltreg

#endif  // LTREG_EXCHANGE_DOCUMENT_H
