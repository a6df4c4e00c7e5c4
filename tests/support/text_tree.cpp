#include "tests/support/text_tree.h"

#include "ltlib/fileregistry/text_writer.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {
namespace {

void show(const QSCfgDataSection& section, const std::string& path, std::string& shown) {
  if (section.fieldCount() == 0 && !path.empty()) {
    shown += path + '\n';
  }
  for (std::size_t i = 0; i < section.fieldCount(); ++i) {
    const QSCfgDataField& field = section.fieldAt(i);
    std::string text;
    for (const char byte : field.getValue()) {
      text += byte == '\n' ? std::string("|n") : std::string(1, byte);
    }
    shown.append(path).append("|").append(field.name()).append("|");
    shown.append(std::to_string(field.type())).append("|").append(text).append("\n");
  }
  for (std::size_t i = 0; i < section.sectionCount(); ++i) {
    const QSCfgDataSection& child = section.sectionAt(i);
    show(child, path.empty() ? child.name() : path + '/' + child.name(), shown);
  }
}

}  // namespace

Reading readText(std::string_view text) {
  Reading reading;
  reading.root = std::make_unique<QSCfgDataSection>("root");
  detail::TextLineSource source(text);
  detail::ReadContext context{source, reading.lineCount,
                              [&](const char* message) { reading.messages += message; }};
  try {
    reading.result = detail::cfgReadText(context, *reading.root);
  } catch (const QSException& caught) {
    reading.threw = caught.What() == "Registry file parsing error";
  }
  return reading;
}

std::string showTree(const QSCfgDataSection& root) {
  std::string shown;
  show(root, {}, shown);
  return shown;
}

std::string writeText(const QSCfgDataSection& root) {
  const TempFolder folder;
  const std::string path = folder.path("text");
  {
    const std::unique_ptr<Platform::File, Platform::FileResult (*)(Platform::File*)> file(
        Platform::fileCalls().openForWriting(path.c_str(), nullptr), Platform::fileCalls().close);
    detail::LineSink sink(*file);
    for (std::size_t i = 0; i < root.sectionCount(); ++i) {
      detail::cfgWriteSection(sink, root.sectionAt(i));
    }
    sink.flush();
  }
  return readFile(path);
}

}  // namespace LTLib::Testing
