#include "ltreg/exchange/reg_text.h"

#include <charconv>
#include <cstdint>

#include "ltlib/ltlib.h"
#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/exchange/utf16.h"

namespace ltreg {
namespace {

constexpr std::string_view kVersion5 = "Windows Registry Editor Version 5.00";
constexpr std::string_view kVersion4 = "REGEDIT4";
constexpr std::size_t kWidth = 80;  // of lines of hexadecimal digits, as other tools write them

std::string inUtf8(std::string_view all) {
  if (all.starts_with("\xFF\xFE") || all.starts_with("\xFE\xFF")) {
    return utf8Of(all.substr(2), all.starts_with("\xFE\xFF"));
  }
  return std::string(all.starts_with("\xEF\xBB\xBF") ? all.substr(3) : all);
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos
             ? std::string_view()
             : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

// What stands behind the data of a line.
bool isBlankOrComment(std::string_view rest) {
  rest = trimmed(rest);
  return rest.empty() || rest.starts_with(';');
}

// Reads one file from its first line to its last.
class RegReader {
 public:
  RegReader(std::string text, const std::string& file) : m_text(inUtf8(text)), m_file(file) {
    text = {};
    m_rest = m_text;
    m_lineEnd = m_rest.find('\n') != std::string_view::npos ? '\n' : '\r';
  }

  Document read() {
    readVersion();
    for (std::string_view line; takeLine(line);) {
      line = trimmed(line);
      if (line.starts_with('[')) {
        readHeader(line);
      } else if (!isBlankOrComment(line) && !line.starts_with('#')) {
        readValue(line);
      }
    }
    return std::move(m_document);
  }

 private:
  [[noreturn]] void bad(const std::string& what) const { throwBadLine(m_file, m_line, what); }

  bool takeLine(std::string_view& line) {
    if (m_rest.empty()) {
      return false;
    }
    const std::size_t end = m_rest.find(m_lineEnd);
    line = m_rest.substr(0, end);
    m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + 1);
    line.remove_suffix(line.ends_with('\r') ? 1 : 0);
    ++m_line;
    return true;
  }

  void readVersion() {
    std::string_view line;
    if (!takeLine(line) || (trimmed(line) != kVersion5 && trimmed(line) != kVersion4)) {
      bad("the first line is neither '" + std::string(kVersion5) + "' nor '" +
          std::string(kVersion4) + '\'');
    }
    m_wide = trimmed(line) == kVersion5;
  }

  void readHeader(std::string_view line) {
    // The name may hold brackets, too.
    const std::size_t end = line.rfind(']');
    if (end == std::string_view::npos || !isBlankOrComment(line.substr(end + 1))) {
      bad("a header without its closing bracket");
    }
    line = line.substr(1, end - 1);
    KeyEntry entry;
    entry.deleted = line.starts_with('-');
    entry.line = m_line;
    line.remove_prefix(entry.deleted ? 1 : 0);
    try {
      entry.key = parseKey(withSingleBackslashes(line));
    } catch (const Failure& failure) {
      bad(failure.what());
    }
    m_document.push_back(std::move(entry));
  }

  static std::string withSingleBackslashes(std::string_view name) {
    std::string single;
    for (const char byte : name) {
      single.append(byte == '\\' && single.ends_with('\\') ? 0 : 1, byte);
    }
    return single;
  }

  void readValue(std::string_view line) {
    if (m_document.empty()) {
      bad("a value ahead of the first header");
    }
    if (m_document.back().deleted) {
      bad("a value of a key that is deleted");
    }
    ValueEntry entry;
    entry.line = m_line;
    if (line.starts_with('@')) {
      line.remove_prefix(1);
    } else if (line.starts_with('"')) {
      entry.name = takeQuoted(line);
    } else {
      bad("a line that is no header, value or comment");
    }
    line = trimmed(line);
    if (!line.starts_with('=')) {
      bad("a value's name without '=' behind it");
    }
    entry.value = takeData(trimmed(line.substr(1)));
    m_document.back().values.push_back(std::move(entry));
  }

  // A quoted text may hold line ends, which stand for themselves.
  std::string takeQuoted(std::string_view& line) {
    std::string text;
    line.remove_prefix(1);
    for (;;) {
      const std::size_t mark = line.find_first_of("\"\\");
      text += line.substr(0, mark);
      if (mark == std::string_view::npos) {
        if (!takeLine(line)) {
          bad("a text without its closing quote");
        }
        text += "\r\n";
        continue;
      }
      const bool ends = line[mark] == '"';
      line.remove_prefix(mark + 1);
      if (ends) {
        return text;
      }
      if (line.empty()) {
        bad("a backslash with nothing behind it");
      }
      text += line[0] == 'n' ? '\n' : line[0] == 'r' ? '\r' : line[0];
      line.remove_prefix(1);
    }
  }

  std::optional<Value> takeData(std::string_view data) {
    if (data.starts_with('-')) {
      endsWithComment(data.substr(1));
      return std::nullopt;
    }
    if (data.starts_with('"')) {
      std::string text = takeQuoted(data);
      endsWithComment(data);
      return Value{{REG_SZ}, std::move(text)};
    }
    if (data.starts_with("dword:")) {
      return takeNumber(data.substr(6));
    }
    if (data.starts_with("hex")) {
      return takeHex(data.substr(3));
    }
    bad("neither a text nor dword:, hex: or hex(TYPE):");
  }

  void endsWithComment(std::string_view rest) const {
    if (!isBlankOrComment(rest)) {
      bad("more behind the end of a value");
    }
  }

  template <class Number>
  Number takeDigits(std::string_view& text, const std::string& what) const {
    Number number = 0;
    const auto taken = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    if (taken.ec != std::errc()) {
      bad(what);
    }
    text.remove_prefix(static_cast<std::size_t>(taken.ptr - text.data()));
    return number;
  }

  Value takeNumber(std::string_view digits) const {
    digits = trimmed(digits);
    const auto number = takeDigits<std::uint32_t>(digits, "dword: without a number of 32 bits");
    endsWithComment(digits);
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
      bytes += static_cast<char>(number >> shift & 0xFF);
    }
    return {{REG_DWORD}, std::move(bytes)};
  }

  Value takeHex(std::string_view data) {
    unsigned int type = REG_BINARY;
    if (data.starts_with('(')) {
      data.remove_prefix(1);
      type = takeDigits<unsigned int>(data, "hex( without a type's number");
      if (!data.starts_with(')')) {
        bad("hex( without its closing bracket");
      }
      data.remove_prefix(1);
    }
    if (!data.starts_with(':')) {
      bad("hex without a colon");
    }
    std::string bytes = takeBytes(data.substr(1));
    if (m_wide && (isText(type) || type == REG_MULTI_SZ)) {
      bytes = utf8Of(bytes);
    }
    if (type == REG_MULTI_SZ) {
      // However many terminators stand at the end, they are no items.
      bytes.resize(bytes.find_last_not_of('\0') + 1);
      bytes.append(bytes.empty() ? 1 : 2, '\0');
    }
    return asRead(type, std::move(bytes), false);
  }

  // The next line with digits.
  void takeContinuation(std::string_view& data) {
    do {
      if (!takeLine(data)) {
        bad("hexadecimal digits that end in a backslash, and no line behind");
      }
    } while (isBlankOrComment(data));
  }

  std::string takeBytes(std::string_view data) {
    std::string bytes;
    for (;;) {
      data = trimmed(data);
      if (data.starts_with('\\') && isBlankOrComment(data.substr(1))) {
        takeContinuation(data);
        continue;
      }
      if (data.empty() || data.starts_with(';')) {
        return bytes;
      }
      bytes += static_cast<char>(takeDigits<std::uint8_t>(data, "no byte in hexadecimal digits"));
      data = trimmed(data);
      if (!data.starts_with(',')) {
        endsWithComment(data);
        return bytes;
      }
      data.remove_prefix(1);
    }
  }

  std::string m_text;
  const std::string& m_file;
  std::string_view m_rest;
  char m_lineEnd = '\n';
  std::size_t m_line = 0;
  bool m_wide = true;
  Document m_document;
};

std::string regQuoted(std::string_view text) {
  std::string result = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') {
      result += '\\';
    }
    result += byte;
  }
  return result + '"';
}

std::string hexLines(const std::string& opening, std::string_view bytes) {
  std::string text;
  std::string line = opening;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    line += hexDigits(bytes.substr(i, 1));
    line += i + 1 < bytes.size() ? "," : "";
    if (line.size() + 4 > kWidth && i + 1 < bytes.size()) {
      text += line + "\\\r\n";
      line = "  ";
    }
  }
  return text + line;
}

std::string hexOf(const std::string& name, unsigned int type, std::string_view bytes) {
  std::string opening = name + "=hex";
  if (type != REG_BINARY) {
    char digits[8];
    const auto end = std::to_chars(digits, digits + sizeof digits, type, 16);
    opening.append("(").append(digits, end.ptr).append(")");
  }
  return hexLines(opening + ':', bytes);
}

std::string lineOf(const ValueEntry& entry) {
  const std::string name = entry.name.empty() ? "@" : regQuoted(entry.name);
  if (!entry.value) {
    return name + "=-";
  }
  const Value& value = *entry.value;
  const bool wide = isText(value.type) || value.type == REG_MULTI_SZ;
  const std::optional<std::string> utf16 = wide ? utf16Of(bytesOf(value)) : std::nullopt;
  if (value.type == REG_SZ && utf16 &&
      value.data.find_first_of(std::string_view("\0\r\n", 3)) == std::string::npos) {
    return name + '=' + regQuoted(value.data);
  }
  if (value.type == REG_DWORD && !value.inHex) {
    const std::string low(value.data.rbegin(), value.data.rend());
    return name + "=dword:" + hexDigits(low);
  }
  return hexOf(name, value.type, utf16 ? *utf16 : bytesOf(value));
}

}  // namespace

Document readRegText(std::string text, const std::string& file) {
  return RegReader(std::move(text), file).read();
}

std::string writeRegText(const Document& document) {
  std::string text(kVersion5);
  text += "\r\n";
  for (const KeyEntry& entry : document) {
    text += std::string("\r\n[") + (entry.deleted ? "-" : "") +
            fullName(entry.key.root, entry.key.path) + "]\r\n";
    for (const ValueEntry& value : entry.values) {
      text += lineOf(value) + "\r\n";
    }
  }
  return text + "\r\n";
}

bool looksLikeRegText(std::string_view text) {
  const std::string start = inUtf8(text.substr(0, 100));
  return start.starts_with(kVersion5) || start.starts_with(kVersion4);
}

}  // namespace ltreg
