#include "tests/support/text_tree.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "ltlib/fileregistry/text/text_reader.h"
#include "ltlib/fileregistry/text/text_writer.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib::Testing {
namespace {

class PieceSource final : public detail::LineSource {
 public:
  PieceSource(std::string_view text, std::size_t size, detail::TextStore& store)
      : LineSource(store, LineEnds::kAsTheFirst), m_text(text), m_size(size) {}

 protected:
  std::size_t read(char* to, std::size_t room) override {
    const std::size_t taken = m_text.copy(to, std::min(room, m_size));
    m_text.remove_prefix(taken);
    return taken;
  }

 private:
  std::string_view m_text;
  std::size_t m_size;
};

void show(const QSCfgDataSection& section, const std::string& path, bool all, std::string& shown) {
  if (all && section.fields().size() == 0 && !path.empty()) {
    shown += path + '\n';
  }
  for (std::size_t i = 0; i < section.fields().size(); ++i) {
    const QSCfgDataField& field = section.fields().at(i);
    std::string text(field.getValue());
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n')) {
      text.replace(at, 1, "|n");
    }
    shown += path + '|' + std::string(field.name()) + '|' + std::to_string(field.type()) + '|' +
             text + '\n';
  }
  for (std::size_t i = 0; i < section.sectionCount(); ++i) {
    const QSCfgDataSection& child = section.sectionAt(i);
    show(child, path + (path.empty() ? "" : "/") + std::string(child.name()), all, shown);
  }
}

}  // namespace

Reading readText(std::string_view text, std::size_t pieceSize) {
  Reading reading;
  reading.tree = std::make_unique<QSCfgTree>("root");
  PieceSource source(text, pieceSize, reading.tree->texts());
  detail::ReadContext context{source, reading.lineCount,
                              [&](const char* message) { reading.messages += message; }};
  try {
    const bool whole = detail::cfgReadText(context, *reading.tree) == detail::ReadResult::kWhole;
    reading.end = whole ? "whole" : "bad header";
  } catch (const QSException&) {
    reading.end = "parse error";
  }
  return reading;
}

std::optional<std::string> writeText(const QSCfgTree& tree) {
  static std::string s_written;
  static std::max_align_t s_noFile;  // nothing looks into it while writing goes to memory
  const auto toMemory = [](Platform::File&, const char* bytes, std::size_t count) {
    s_written.append(bytes, count);
    return Platform::FileResult::kDone;
  };
  s_written.clear();
  const auto toFile = std::exchange(Platform::fileCalls().write, toMemory);
  bool accepted = true;
  try {
    detail::LineSink sink(*reinterpret_cast<Platform::File*>(&s_noFile));
    for (std::size_t i = 0; i < tree.top().sectionCount(); ++i) {
      detail::cfgWriteSection(sink, tree.top().sectionAt(i));
    }
    sink.flush();
  } catch (const QSException&) {
    accepted = false;
  }
  Platform::fileCalls().write = toFile;
  return accepted ? std::optional(s_written) : std::nullopt;
}

std::string showTree(const QSCfgTree& tree) {
  std::string shown;
  show(tree.top(), {}, true, shown);
  return shown;
}

std::string showFields(const QSCfgTree& tree) {
  std::string shown;
  show(tree.top(), {}, false, shown);
  return shown;
}

}  // namespace LTLib::Testing
