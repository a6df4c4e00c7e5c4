// What a line of the writer must not hold lest the reader take it for something else. The reader finds
// a name's end by the next quote, and a quoted text's by the last one of its line, which is the
// writer's own; a bare text ends with the line, unless that ends in a backslash.
#include "ltlib/fileregistry/text/file_form.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "ltlib/fileregistry/text/list_text.h"
#include "ltlib/fileregistry/text/text_reader.h"
#include "ltlib/fileregistry/text/text_writer.h"
#include "ltlib/fileregistry/tree/key_path.h"

namespace LTLib::detail {
namespace {

// Whether a text holds one of these bytes. Looks at eight bytes at once: what is compared becomes a byte
// of zero where it agrees, which a subtraction of one turns over.
template <unsigned char... kBytes>
bool holdsAny(std::string_view text) {
  constexpr std::uint64_t kOnes = 0x0101010101010101u;
  const auto agrees = [](std::uint64_t eight, std::uint64_t byte) {
    const std::uint64_t compared = eight ^ (byte * kOnes);
    return (compared - kOnes) & ~compared & (kOnes << 7);
  };
  std::size_t place = 0;
  for (; place + 8 <= text.size(); place += 8) {
    std::uint64_t eight;
    std::memcpy(&eight, text.data() + place, sizeof eight);
    if ((agrees(eight, kBytes) | ...) != 0) {
      return true;
    }
  }
  return std::any_of(text.begin() + static_cast<std::ptrdiff_t>(place), text.end(), [](char byte) {
    return ((static_cast<unsigned char>(byte) == kBytes) || ...);
  });
}

bool isInOneLine(std::string_view text) {
  return !holdsAny<'\n', '\0'>(text);
}

bool isName(std::string_view name) {
  return !name.empty() && !holdsAny<'\n', '\0', '"'>(name);
}

bool isPlainName(std::string_view name) {
  return !name.empty() && !holdsAny<'\n', '\0', '\\', ']'>(name);
}

// What is known of the sections above spares looking at their names again.
bool isPlainPath(QSCfgDataSection& section) {
  const auto isOpen = [](const QSCfgDataSection& at) {
    return at.parent() != nullptr && at.form() != QSCfgDataSection::Form::kPlain;
  };
  for (QSCfgDataSection* at = &section; isOpen(*at); at = at->parent()) {
    if (!isPlainName(at->name())) {
      return false;
    }
  }
  for (QSCfgDataSection* at = &section; isOpen(*at); at = at->parent()) {
    at->noteForm(QSCfgDataSection::Form::kPlain);
  }
  return true;
}

// A list takes several lines, so that the reader itself is asked, with the lines that the writer would
// write.
bool listComesBack(std::string_view name, std::string_view text) {
  const std::string written = cfgFieldLine(name, kCfgListString, text);
  TextStore store;
  TextLineSource source(written, store);
  std::uint16_t ignored = 0;
  ReadContext context{source, ignored, [](const char*) {}};
  std::string_view line;
  if (!cfgReadLine(source, line)) {
    return false;
  }
  const QSCfgDataField back = cfgParseField(context, line);
  // A line that is left over would be read as another field, or spoil the next one.
  return back != nullptr && back.name() == name && !source.takeLine(line) &&
         back.getValue() == joinListLines(text) && holdSameItems(back.getValue(), text);
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

bool sectionComesBack(QSCfgDataSection& section) {
  using Form = QSCfgDataSection::Form;
  if (section.form() == Form::kUnknown && !isPlainPath(section)) {
    std::vector<std::string_view> names;
    for (const QSCfgDataSection* at = &section; at->parent() != nullptr; at = at->parent()) {
      names.push_back(at->name());
    }
    std::reverse(names.begin(), names.end());
    section.noteForm(headerComesBack(names) ? Form::kHas : Form::kLacks);
  }
  return section.form() != Form::kLacks;
}

bool fieldComesBack(std::string_view name, QSCfgTypeCode code, std::string_view text) {
  switch (code) {
    case kCfgString:
    case kCfgDir:
      return isName(name) && isInOneLine(text);
    case kCfgListString:
      if (!isInOneLine(text)) {
        return isName(name) && listComesBack(name, text);
      }
      [[fallthrough]];
    case kCfgULong:
    case kCfgBinary:
      return isName(name) && isInOneLine(text) && !text.ends_with('\\');
  }
  return false;
}

}  // namespace LTLib::detail
