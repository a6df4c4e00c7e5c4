#include "ltreg/value.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>

#include "ltlib/ltlib.h"
#include "ltreg/failure.h"
#include "ltreg/shown_text.h"

namespace ltreg {
namespace {

struct TypeName {
  unsigned int type;
  const char* word;
};

constexpr TypeName kTypeNames[] = {
    {REG_SZ, "string"},     {REG_DWORD, "ulong"},      {REG_BINARY, "binary"},
    {REG_MULTI_SZ, "list"}, {REG_EXPAND_SZ, "expand"},
};

// Decimal or, behind "0x", hexadecimal; a number with a sign is at least -2^31.
std::optional<std::uint32_t> parseNumber(std::string_view text) {
  const bool negative = text.starts_with('-');
  text.remove_prefix(negative ? 1 : 0);
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  text.remove_prefix(hexadecimal ? 2 : 0);
  std::uint32_t magnitude = 0;
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, magnitude, hexadecimal ? 16 : 10);
  if (parsed.ec != std::errc() || parsed.ptr != end || (negative && magnitude > 0x80000000u)) {
    return std::nullopt;
  }
  return negative ? 0 - magnitude : magnitude;
}

std::string bytesOfNumber(const std::string& word) {
  const std::optional<std::uint32_t> number = parseNumber(word);
  if (!number) {
    throw Failure(ExitCode::kBadInput,
                  inQuotes(word) +
                      " is no ulong; give a number from 0 to 4294967295 or down to"
                      " -2147483648, in decimal or as 0x and hexadecimal digits");
  }
  std::string bytes(sizeof *number, '\0');
  std::memcpy(bytes.data(), &*number, sizeof *number);
  return bytes;
}

// Each item ends in NUL, and the list in one more.
std::string bytesOfList(const std::vector<std::string>& items) {
  std::string bytes;
  for (const std::string& item : items) {
    bytes.append(item) += '\0';
  }
  return bytes += '\0';
}

}  // namespace

std::string typeWord(unsigned int type) {
  const auto* found = std::find_if(std::begin(kTypeNames), std::end(kTypeNames),
                                   [&](const TypeName& row) { return row.type == type; });
  return found != std::end(kTypeNames) ? found->word : "type-" + std::to_string(type);
}

unsigned int typeOfWord(std::string_view word) {
  const auto* found = std::find_if(std::begin(kTypeNames), std::end(kTypeNames),
                                   [&](const TypeName& row) { return row.word == word; });
  return found != std::end(kTypeNames) ? found->type : REG_SZ;
}

std::uint32_t numberOf(const Value& value) {
  std::uint32_t number = 0;
  std::memcpy(&number, value.data.data(), std::min(value.data.size(), sizeof number));
  return number;
}

std::vector<std::string> itemsOf(const Value& value) {
  std::vector<std::string> items;
  for (std::size_t start = 0; start < value.data.size();) {
    const std::size_t end = std::min(value.data.find('\0', start), value.data.size());
    items.push_back(value.data.substr(start, end - start));
    start = end + 1;
  }
  return items;
}

std::string onOneLine(const Value& value) {
  if (value.type == REG_DWORD) {
    return std::to_string(numberOf(value));
  }
  if (value.type != REG_MULTI_SZ) {
    return escapeControls(value.data);
  }
  std::string line;
  for (const std::string& item : itemsOf(value)) {
    line.append(line.empty() ? "" : "\t").append(escapeControls(item));
  }
  return line;
}

nlohmann::ordered_json jsonOf(const Value& value) {
  if (value.type == REG_DWORD) {
    return numberOf(value);
  }
  if (value.type == REG_MULTI_SZ) {
    return itemsOf(value);
  }
  return value.data;
}

std::string bytesToSet(unsigned int type, const std::vector<std::string>& words) {
  if (type == REG_MULTI_SZ) {
    return bytesOfList(words);
  }
  if (words.size() != 1) {
    throw Failure(ExitCode::kUsage, "a " + typeWord(type) + " takes one VALUE, not " +
                                        std::to_string(words.size()) +
                                        "; put it in quotes, and write '' for the empty text");
  }
  if (type == REG_DWORD) {
    return bytesOfNumber(words.front());
  }
  // Binary data has no terminator; texts count theirs.
  return type == REG_BINARY ? words.front() : words.front() + '\0';
}

}  // namespace ltreg
