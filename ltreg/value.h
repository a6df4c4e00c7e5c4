// Values of the registry and their forms in the command line and in the output.
#ifndef LTREG_VALUE_H
#define LTREG_VALUE_H

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace ltreg {

/// A value as the registry holds it: its type number, and its bytes without terminators.
struct Value {
  unsigned int type = 0;
  std::string data;
};

struct NamedValue {
  std::string name;
  Value value;
};

/// The word for a type number, as in --type; "type-N" for a number without one.
[[nodiscard]] std::string typeWord(unsigned int type);

/// The type number of a word that --type takes.
[[nodiscard]] unsigned int typeOfWord(std::string_view word);

/// The number that a value of type ulong holds.
[[nodiscard]] std::uint32_t numberOf(const Value& value);

/// The items of a list.
[[nodiscard]] std::vector<std::string> itemsOf(const Value& value);

/// The value on one line: control bytes escaped, items parted by tabs.
[[nodiscard]] std::string onOneLine(const Value& value);

/// Text, number or array of texts.
[[nodiscard]] nlohmann::ordered_json jsonOf(const Value& value);

/// The bytes that set a value of this type, terminators included. Throws Failure for a number out
/// of range, and for none or several words where one is wanted.
[[nodiscard]] std::string bytesToSet(unsigned int type, const std::vector<std::string>& words);

}  // namespace ltreg

#endif  // LTREG_VALUE_H
