#include "ltreg/registry/value.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

#include "ltlib/ltlib.h"
#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

struct TypeName {
  unsigned int type;
  const char* word;
};

constexpr TypeName kTypeNames[] = {
    {REG_SZ, "string"},        {REG_DWORD, "ulong"}, {REG_BINARY, "binary"}, {REG_MULTI_SZ, "list"},
    {REG_EXPAND_SZ, "expand"}, {REG_QWORD, "qword"}, {REG_NONE, "none"},     {REG_LINK, "link"},
};
constexpr std::string_view kNumbered = "type-";

bool isNumber(unsigned int type) {
  return type == REG_DWORD || type == REG_QWORD;
}

// All of a text as a number without a sign.
template <class Number>
std::optional<Number> parseDigits(std::string_view text, int base) {
  Number number = 0;
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, number, base);
  return parsed.ec == std::errc() && parsed.ptr == end ? std::optional(number) : std::nullopt;
}

// Decimal or, behind "0x", hexadecimal; a number with a sign fits the type with a sign.
template <class Number>
std::optional<Number> parseNumber(std::string_view text) {
  const bool negative = text.starts_with('-');
  text.remove_prefix(negative ? 1 : 0);
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  text.remove_prefix(hexadecimal ? 2 : 0);
  const std::optional<Number> magnitude = parseDigits<Number>(text, hexadecimal ? 16 : 10);
  constexpr Number kMostBelow = Number{1} << (8 * sizeof(Number) - 1);
  if (!magnitude || (negative && *magnitude > kMostBelow)) {
    return std::nullopt;
  }
  return negative ? 0 - *magnitude : magnitude;
}

template <class Number>
std::string bytesOfNumber(const std::string& word, const char* kind) {
  const std::optional<Number> number = parseNumber<Number>(word);
  if (!number) {
    constexpr Number kMostBelow = Number{1} << (8 * sizeof(Number) - 1);
    throw Failure(ExitCode::kBadInput,
                  inQuotes(word) + " is no " + kind + "; give a number from 0 to " +
                      std::to_string(static_cast<Number>(-1)) + " or down to -" +
                      std::to_string(kMostBelow) + ", in decimal or as 0x and hexadecimal digits");
  }
  std::string bytes(sizeof *number, '\0');
  std::memcpy(bytes.data(), &*number, sizeof *number);
  return bytes;
}

// Each item ends in NUL, and the list in one more.
std::string bytesOfList(const std::vector<std::string>& items) {
  std::string bytes;
  for (const std::string& item : items) {
    if (item.empty()) {
      throw Failure(ExitCode::kBadInput, "a list cannot hold an empty item; leave it out");
    }
    bytes.append(item) += '\0';
  }
  return bytes += '\0';
}

std::string bytesOfHex(const std::string& word) {
  std::string bytes;
  for (std::size_t i = 0; i < word.size(); i += 2) {
    const std::string_view pair = std::string_view(word).substr(i, 2);
    const std::optional<std::uint8_t> byte = parseDigits<std::uint8_t>(pair, 16);
    if (!byte || pair.size() != 2) {
      throw Failure(ExitCode::kBadInput, inQuotes(word) +
                                             " is no data in hexadecimal; give two digits for"
                                             " each byte, as 00ff");
    }
    bytes += static_cast<char>(*byte);
  }
  return bytes;
}

// Numbers lie in memory as the processor has them, in both backends and on both systems.
template <class Number>
Number asNumber(const std::string& bytes) {
  Number number = 0;
  std::memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof number));
  return number;
}

std::uint64_t numberOf(const Value& value) {
  return value.type == REG_QWORD ? asNumber<std::uint64_t>(value.data)
                                 : asNumber<std::uint32_t>(value.data);
}

}  // namespace

std::string typeWord(const ValueType& type) {
  const auto* found = std::find_if(std::begin(kTypeNames), std::end(kTypeNames),
                                   [&](const TypeName& row) { return row.type == type.type; });
  // A number of a wrong size is shown in digits, and "ulong" would promise a number.
  return found != std::end(kTypeNames) && !(type.inHex && isNumber(type.type))
             ? found->word
             : std::string(kNumbered) + std::to_string(type.type);
}

std::optional<ValueType> typeOfWord(std::string_view word) {
  for (const TypeName& row : kTypeNames) {
    if (row.word == word) {
      return ValueType{row.type, !isNumber(row.type) && needsHex(row.type, 0)};
    }
  }
  if (word.starts_with(kNumbered)) {
    word.remove_prefix(kNumbered.size());
    if (const std::optional<unsigned int> number = parseDigits<unsigned int>(word, 10)) {
      return ValueType{*number, needsHex(*number, 0)};
    }
  }
  return std::nullopt;
}

std::vector<std::string> typeWords() {
  std::vector<std::string> words;
  for (const TypeName& row : kTypeNames) {
    words.emplace_back(row.word);
  }
  return words;
}

bool isTypeOfFiles(unsigned int type) {
  return type == REG_SZ || type == REG_DWORD || type == REG_BINARY || type == REG_MULTI_SZ;
}

bool isText(unsigned int type) {
  return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_LINK;
}

bool needsHex(unsigned int type, std::size_t size) {
  return !isText(type) && type != REG_MULTI_SZ && !(type == REG_DWORD && size == 4) &&
         !(type == REG_QWORD && size == 8);
}

Value asRead(unsigned int type, std::string bytes, bool onFiles) {
  Value value{{type, needsHex(type, bytes.size())}, std::move(bytes)};
  std::string& data = value.data;
  const bool isList = type == REG_MULTI_SZ;
  if (onFiles) {
    // Some programs count the terminator in when they set a text, and the tree keeps what it is given.
    while ((isText(type) || isList) && data.ends_with('\0')) {
      data.pop_back();
    }
  } else if ((isText(type) && data.ends_with('\0')) ||
             (isList && (data.ends_with(std::string_view("\0\0", 2)) || data.size() == 1))) {
    // What others wrote may lack a terminator, and what stands behind the one is no terminator. A list
    // has one for each item and one more.
    data.pop_back();
  }
  return value;
}

bool sameValue(const Value& one, const Value& other) {
  // How many terminators a list was read with depends on who wrote it.
  return one.type == other.type &&
         (one.type == REG_MULTI_SZ ? itemsOf(one) == itemsOf(other) : one.data == other.data);
}

std::string bytesOf(const Value& value) {
  if (value.type == REG_MULTI_SZ) {
    return bytesOfList(itemsOf(value));
  }
  return isText(value.type) ? value.data + '\0' : value.data;
}

std::vector<std::string> itemsOf(const Value& value) {
  std::vector<std::string> items;
  for (std::size_t start = 0; start < value.data.size();) {
    const std::size_t end = std::min(value.data.find('\0', start), value.data.size());
    items.push_back(value.data.substr(start, end - start));
    // An item may lack its terminator where another program wrote the list.
    start = end + 1;
  }
  return items;
}

std::string onOneLine(const Value& value) {
  if (value.inHex) {
    return hexDigits(value.data);
  }
  if (isNumber(value.type)) {
    return std::to_string(numberOf(value));
  }
  if (value.type != REG_MULTI_SZ) {
    return escapeControls(value.data);
  }
  std::string line;
  for (const std::string& item : itemsOf(value)) {
    line.append(escapeControls(item)) += '\t';
  }
  return line.substr(0, line.size() - (line.empty() ? 0 : 1));
}

Json jsonOf(const Value& value) {
  if (value.inHex) {
    return hexDigits(value.data);
  }
  if (isNumber(value.type)) {
    return numberOf(value);
  }
  if (value.type == REG_MULTI_SZ) {
    return itemsOf(value);
  }
  return value.data;
}

std::string bytesToSet(const ValueType& type, const std::vector<std::string>& words) {
  if (type.type == REG_MULTI_SZ) {
    return bytesOfList(words);
  }
  if (words.size() != 1) {
    throw Failure(ExitCode::kUsage, "a value of the type " + typeWord(type) +
                                        " takes one VALUE, not " + std::to_string(words.size()) +
                                        "; put it in quotes, and write '' for the empty text");
  }
  const std::string& word = words.front();
  if (type.inHex) {
    return bytesOfHex(word);
  }
  if (type.type == REG_DWORD) {
    return bytesOfNumber<std::uint32_t>(word, "ulong");
  }
  if (type.type == REG_QWORD) {
    return bytesOfNumber<std::uint64_t>(word, "qword");
  }
  // Binary data has no terminator; texts count theirs.
  return type.type == REG_BINARY ? word : word + '\0';
}

}  // namespace ltreg
