// Values of the registry and their forms in the command line and in the output.
#ifndef LTREG_REGISTRY_VALUE_H
#define LTREG_REGISTRY_VALUE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ltreg/cli/json.h"

namespace ltreg {

/// A value's type, and how its bytes are given and shown. What is neither text nor number is any
/// bytes, and so is a number of a size that is not its type's; they are hexadecimal digits.
struct ValueType {
  unsigned int type = 0;
  bool inHex = false;
};

/// A value as the registry holds it, its bytes without terminators.
struct Value : ValueType {
  std::string data;
};

struct NamedValue {
  std::string name;
  Value value;
};

/// The word for a type, as in --type; "type-N" for a number without one, and for a number's type
/// with other bytes.
[[nodiscard]] std::string typeWord(const ValueType& type);

/// The type of such a word; none if it is no such word.
[[nodiscard]] std::optional<ValueType> typeOfWord(std::string_view word);

/// All words for types but the numbered ones.
[[nodiscard]] std::vector<std::string> typeWords();

/// Whether a store file can hold values of the type.
[[nodiscard]] bool isTypeOfFiles(unsigned int type);

/// Whether a value of the type is one text.
[[nodiscard]] bool isText(unsigned int type);

/// Whether the bytes are given in hexadecimal digits.
[[nodiscard]] bool needsHex(unsigned int type, std::size_t size);

/// The value that a backend's bytes are, or will be once they are set.
[[nodiscard]] Value asRead(unsigned int type, std::string bytes, bool onFiles);

/// Whether type and bytes are equal, however they are shown.
[[nodiscard]] bool sameValue(const Value& one, const Value& other);

/// The bytes by which the value is set again, terminators included.
[[nodiscard]] std::string bytesOf(const Value& value);

/// The items of a list.
[[nodiscard]] std::vector<std::string> itemsOf(const Value& value);

/// The value on one line: control bytes escaped, items parted by tabs.
[[nodiscard]] std::string onOneLine(const Value& value);

/// Text, number, array of texts, or hexadecimal digits as a text.
[[nodiscard]] Json jsonOf(const Value& value);

/// The bytes that set a value of this type, terminators included. Throws Failure for a number out
/// of range, for an empty item of a list, for what are no hexadecimal digits, and for none or several
/// words where one is wanted.
[[nodiscard]] std::string bytesToSet(const ValueType& type, const std::vector<std::string>& words);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_VALUE_H
