#include "ltlib/fileregistry/file_form.h"

#include <cstdint>

#include "ltlib/fileregistry/key_path.h"
#include "ltlib/fileregistry/list_text.h"
#include "ltlib/fileregistry/text_reader.h"
#include "ltlib/fileregistry/text_writer.h"
#include "ltlib/foundation/kqsresult.h"

namespace LTLib::detail {

bool headerComesBack(const std::vector<std::string_view>& names) {
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

bool fieldComesBack(std::string_view name, QSCfgTypeCode code, std::string_view text,
                    ListLines lines) {
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
  return lines == ListLines::kJoined ? back->getValue() == joinListLines(text)
                                     : back->getValue() == text;
}

}  // namespace LTLib::detail
