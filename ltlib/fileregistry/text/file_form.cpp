#include "ltlib/fileregistry/text/file_form.h"

#include <algorithm>
#include <cstdint>

#include "ltlib/fileregistry/text/list_text.h"
#include "ltlib/fileregistry/text/text_reader.h"
#include "ltlib/fileregistry/text/text_writer.h"
#include "ltlib/fileregistry/tree/key_path.h"
#include "ltlib/foundation/kqsresult.h"

namespace LTLib::detail {
namespace {

bool has(std::string_view text, char byte) {
  return text.find(byte) != std::string_view::npos;
}

bool isOneLine(std::string_view text) {
  return !has(text, '\n') && !has(text, '\0');
}

// Names without any byte that the reader of a header looks for.
bool isPlainPath(const std::vector<std::string_view>& names) {
  return std::all_of(names.begin(), names.end(), [](std::string_view name) {
    return !name.empty() && isOneLine(name) && !has(name, '\\') && !has(name, ']');
  });
}

// A name that ends at its closing quote, and a text that ends with its line. In a quoted text no
// byte but the line's end matters, since its last quote is the writer's.
bool isPlainField(std::string_view name, QSCfgTypeCode code, std::string_view text) {
  if (name.empty() || has(name, '"') || !isOneLine(name) || !isOneLine(text)) {
    return false;
  }
  switch (code) {
    case kCfgString:
    case kCfgDir:
      return true;
    case kCfgULong:
    case kCfgBinary:
    case kCfgListString:
      return !text.ends_with('\\');
  }
  return false;
}

}  // namespace

bool headerComesBack(const std::vector<std::string_view>& names) {
  if (isPlainPath(names)) {
    return true;
  }
  std::string header = "[";
  for (const std::string_view name : names) {
    header.append(name) += '\\';
  }
  header.back() = ']';
  if (header.find('\n') != std::string::npos) {
    return false;
  }
  auto expected = names.begin();
  bool same = true;
  const bool whole = splitHeader(header, [&](std::string_view component) {
    same = same && expected != names.end() && *expected++ == component;
  });
  return whole && same && expected == names.end();
}

bool fieldComesBack(std::string_view name, QSCfgTypeCode code, std::string_view text) {
  if (isPlainField(name, code, text)) {
    return true;
  }
  const std::string written = cfgFieldLine(name, code, text);
  TextLineSource source(written);
  std::uint16_t count = 0;
  ReadContext context{source, count, [](const char*) {}};
  std::string line;
  if (!cfgReadLine(source, line)) {
    return false;
  }
  std::unique_ptr<QSCfgDataFieldString> back;
  try {
    back = cfgParseField(context, line);
  } catch (const QSException&) {
    return false;
  }
  if (back == nullptr || back->name() != name || back->type() != code || source.appendLine(line)) {
    return false;
  }
  const std::string& kept = back->getValue();
  return code == kCfgListString ? kept == joinListLines(text) && holdSameItems(kept, text)
                                : kept == text;
}

}  // namespace LTLib::detail
