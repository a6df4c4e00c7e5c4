#include "ltreg/exchange/json_text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

#include "ltlib/ltlib.h"
#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/exchange/base64.h"
#include "ltreg/exchange/utf16.h"

namespace ltreg {
namespace {

using Node = nlohmann::json;

constexpr char kFormatName[] = "ltreg-export";
constexpr std::uint64_t kVersion = 1;

// Where the objects of the format lie, in the parser's count.
constexpr int kKeyDepth = 2;
constexpr int kValueDepth = 4;

// Goes through the text and counts the lines that the parser has taken.
class CountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CountingIterator(const char* at, std::size_t* line) : m_at(at), m_line(line) {}

  reference operator*() const { return *m_at; }
  CountingIterator& operator++() {
    *m_line += *m_at == '\n' ? 1 : 0;
    ++m_at;
    return *this;
  }
  bool operator==(const CountingIterator& other) const { return m_at == other.m_at; }

 private:
  const char* m_at;
  std::size_t* m_line;
};

// Turns each object into an entry as soon as it has ended, so that its line is known and all of them
// never lie in memory twice.
class JsonReader {
 public:
  JsonReader(const std::string& text, const std::string& file) : m_text(text), m_file(file) {}

  Document read() {
    const auto take = [this](int depth, Node::parse_event_t event, Node& node) {
      if (event == Node::parse_event_t::object_start && depth == kKeyDepth) {
        m_keyLine = m_line;
      }
      return event != Node::parse_event_t::object_end || takeObject(depth, node);
    };
    Node all;
    try {
      all = Node::parse(CountingIterator(m_text.data(), &m_line),
                        CountingIterator(m_text.data() + m_text.size(), &m_line), take);
    } catch (const Node::parse_error& error) {
      // In front of the colon stands its own count of lines and columns.
      const std::string what = error.what();
      bad("no JSON: " + escapeControls(what.substr(std::min(what.find(": ") + 2, what.size()))));
    }
    if (!all.is_object() || !all.contains("keys")) {
      bad("no export of ltreg: there is no array \"keys\"");
    }
    return std::move(m_document);
  }

 private:
  [[noreturn]] void bad(const std::string& what) const { throwBadLine(m_file, m_line, what); }

  // Whether the parser has to keep the object.
  bool takeObject(int depth, const Node& node) {
    if (depth == kValueDepth) {
      m_values.push_back(valueOf(node));
      return false;
    }
    if (depth == kKeyDepth) {
      takeKey(node);
      return false;
    }
    if (depth == 0) {
      demandFormat(node);
    }
    return true;
  }

  void demandFormat(const Node& node) const {
    const auto format = node.find("format");
    const auto version = node.find("version");
    if (format == node.end() || *format != kFormatName || version == node.end()) {
      bad(std::string("no export of ltreg: there is no \"format\": \"") + kFormatName +
          "\" with a \"version\"");
    }
    if (*version != kVersion) {
      bad("version " + version->dump() + " of the format, of which this ltreg knows 1 alone");
    }
  }

  static bool isDeletion(const Node& node) {
    const auto deleted = node.find("deleted");
    return deleted != node.end() && *deleted == true;
  }

  const Node& member(const Node& node, const char* name) const {
    const auto found = node.find(name);
    if (found == node.end()) {
      bad(std::string("an object without \"") + name + '"');
    }
    return *found;
  }

  void takeKey(const Node& node) {
    KeyEntry entry;
    entry.line = m_keyLine;
    entry.deleted = isDeletion(node);
    const std::string name = textOf(member(node, "key"));
    try {
      entry.key = parseKey(name);
    } catch (const Failure& failure) {
      bad(failure.what());
    }
    if (entry.deleted && !m_values.empty()) {
      bad("values of a key that is deleted");
    }
    entry.values = std::move(m_values);
    m_values.clear();
    m_document.push_back(std::move(entry));
  }

  ValueEntry valueOf(const Node& node) const {
    ValueEntry entry;
    entry.line = m_line;
    entry.name = textOf(member(node, "name"));
    if (isDeletion(node)) {
      return entry;
    }
    const Node& word = member(node, "type");
    const std::optional<ValueType> type =
        word.is_string() ? typeOfWord(word.get_ref<const std::string&>()) : std::nullopt;
    if (!type) {
      bad(word.dump(-1, ' ', true, Node::error_handler_t::replace) + " is no type");
    }
    entry.value = asRead(type->type, bytesOf(*type, member(node, "value")), false);
    return entry;
  }

  // As a registry has them, terminators included.
  std::string bytesOf(const ValueType& type, const Node& value) const {
    if (type.type == REG_MULTI_SZ) {
      return listOf(value);
    }
    if (type.type == REG_DWORD && !type.inHex) {
      return numberOf<std::uint32_t>(value);
    }
    if (type.type == REG_QWORD && !type.inHex) {
      return numberOf<std::uint64_t>(value);
    }
    return textOf(value) + (isText(type.type) ? std::string(1, '\0') : std::string());
  }

  std::string listOf(const Node& value) const {
    if (!value.is_array()) {
      bad("a list that is no array");
    }
    std::string bytes;
    for (const Node& item : value) {
      bytes += textOf(item) + '\0';
    }
    return bytes + '\0';
  }

  template <class Number>
  std::string numberOf(const Node& value) const {
    if (!value.is_number_unsigned() ||
        value.get<std::uint64_t>() > std::numeric_limits<Number>::max()) {
      bad("no number from 0 to " + std::to_string(std::numeric_limits<Number>::max()));
    }
    const auto number = value.get<Number>();
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
  }

  std::string textOf(const Node& node) const {
    if (node.is_string()) {
      return node.get<std::string>();
    }
    if (const auto base64 = node.is_object() ? node.find("base64") : node.end();
        base64 != node.end() && base64->is_string()) {
      if (std::optional<std::string> bytes = bytesOfBase64(base64->get_ref<const std::string&>())) {
        return std::move(*bytes);
      }
    }
    bad("neither a text nor {\"base64\": ...}");
  }

  const std::string& m_text;
  const std::string& m_file;
  std::size_t m_line = 1;
  std::size_t m_keyLine = 1;         // where the key began
  std::vector<ValueEntry> m_values;  // of the key that has not ended
  Document m_document;
};

std::string jsonText(const std::string& text) {
  return utf16Of(text) ? Node(text).dump() : R"({"base64": ")" + base64Of(text) + "\"}";
}

std::string jsonValue(const Value& value) {
  if (value.type == REG_MULTI_SZ) {
    std::string items;
    for (const std::string& item : itemsOf(value)) {
      items.append(items.empty() ? "" : ", ").append(jsonText(item));
    }
    return '[' + items + ']';
  }
  const bool isNumber = !value.inHex && (value.type == REG_DWORD || value.type == REG_QWORD);
  return isNumber ? onOneLine(value) : jsonText(value.data);
}

void writeKey(std::string& text, const KeyEntry& entry) {
  text += "    {\"key\": " + jsonText(fullName(entry.key.root, entry.key.path));
  if (entry.deleted) {
    text += ", \"deleted\": true}";
    return;
  }
  text += ", \"values\": [";
  for (const ValueEntry& value : entry.values) {
    text += &value == &entry.values.front() ? "\n" : ",\n";
    text += "      {\"name\": " + jsonText(value.name);
    text += value.value ? ", \"type\": \"" + typeWord(*value.value) +
                              "\", \"value\": " + jsonValue(*value.value) + '}'
                        : ", \"deleted\": true}";
  }
  text += "]}";
}

}  // namespace

Document readJsonText(const std::string& text, const std::string& file) {
  return JsonReader(text, file).read();
}

std::string writeJsonText(const Document& document) {
  std::string text = std::string("{\n  \"format\": \"") + kFormatName +
                     "\",\n  \"version\": " + std::to_string(kVersion) + ",\n  \"keys\": [";
  for (const KeyEntry& entry : document) {
    text += &entry == &document.front() ? "\n" : ",\n";
    writeKey(text, entry);
  }
  return text + "\n  ]\n}\n";
}

}  // namespace ltreg
