// The reader itself is asked, with the line that the writer would write, so that no rule of the
// format stands here a second time. What holds none of its marks needs no asking: nearly all names
// and texts are such, and asking takes as long as the rest of a set, and longer than that of a save.
#include "ltlib/fileregistry/text/file_form.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "ltlib/fileregistry/text/list_text.h"
#include "ltlib/fileregistry/text/text_reader.h"
#include "ltlib/fileregistry/text/text_writer.h"
#include "ltlib/fileregistry/tree/key_path.h"

namespace LTLib::detail {
namespace {

// The bytes that the reader seeks inside a header, a name or a text.
constexpr auto kMarks = [] {
  std::array<bool, 256> marks{};
  for (const unsigned char mark : {'\n', '\0', '"', '\\', ']'}) {
    marks[mark] = true;
  }
  return marks;
}();

bool holdsMark(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char byte) { return kMarks[static_cast<unsigned char>(byte)]; });
}

bool isPlainName(std::string_view name) {
  return !name.empty() && !holdsMark(name);
}

std::unique_ptr<QSCfgDataFieldString> readBack(LineSource& source) {
  std::uint16_t ignored = 0;
  ReadContext context{source, ignored, [](const char*) {}};
  std::string line;
  try {
    return cfgReadLine(source, line) ? cfgParseField(context, line) : nullptr;
  } catch (const UnendedValue&) {
    return nullptr;
  }
}

}  // namespace

bool headerComesBack(const std::vector<std::string_view>& names) {
  if (std::all_of(names.begin(), names.end(), isPlainName)) {
    return true;
  }
  std::string header = "[";
  for (const std::string_view name : names) {
    header.append(name) += '\\';
  }
  header.back() = ']';
  // A line ends there, so that the header would be cut short.
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
  if (isPlainName(name) && !holdsMark(text)) {
    return true;
  }
  const std::string written = cfgFieldLine(name, code, text);
  TextLineSource source(written);
  const std::unique_ptr<QSCfgDataFieldString> back = readBack(source);
  // A line that is left over would be read as another field, or spoil the next one.
  if (std::string rest;
      back == nullptr || back->name() != name || back->type() != code || source.appendLine(rest)) {
    return false;
  }
  const std::string& kept = back->getValue();
  return code == kCfgListString ? kept == joinListLines(text) && holdSameItems(kept, text)
                                : kept == text;
}

}  // namespace LTLib::detail
