#include "fuzz/fuzz_tree.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "ltlib/fileregistry/text_reader.h"
#include "ltlib/fileregistry/text_writer.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib::Fuzzing {
namespace {

class PieceSource final : public detail::LineSource {
 public:
  PieceSource(std::string_view text, std::size_t size) : m_text(text), m_size(size) {}

 protected:
  std::string_view nextPiece() override {
    const std::string_view piece = m_text.substr(0, m_size);
    m_text.remove_prefix(piece.size());
    return piece;
  }

 private:
  std::string_view m_text;
  std::size_t m_size;
};

std::string s_written;

Platform::FileResult writeToMemory(Platform::File& /*file*/, const char* bytes, std::size_t count) {
  s_written.append(bytes, count);
  return Platform::FileResult::kDone;
}

// No call looks into it while writing goes to memory.
Platform::File& noFile() {
  static std::max_align_t s_place;
  return *reinterpret_cast<Platform::File*>(&s_place);
}

void showSection(const QSCfgDataSection& section, const std::string& path, std::string& shown) {
  for (std::size_t i = 0; i < section.fieldCount(); ++i) {
    const QSCfgDataField& field = section.fieldAt(i);
    shown.append(path).append(1, '\0').append(field.name()).append(1, '\0');
    shown.append(std::to_string(field.type())).append(field.getValue()).append(1, '\0');
  }
}

}  // namespace

Reading readTree(std::string_view text, std::size_t pieceSize) {
  Reading reading{std::make_unique<QSCfgDataSection>("root"), false};
  PieceSource source(text, pieceSize);
  std::uint16_t lineCount = 0;
  detail::ReadContext context{source, lineCount, [](const char*) {}};
  try {
    reading.whole = detail::cfgReadText(context, *reading.root) == detail::ReadResult::kWhole;
  } catch (const QSException&) {
    reading.whole = false;
  }
  return reading;
}

std::optional<std::string> writeTree(const QSCfgDataSection& root) {
  Platform::fileCalls().write = writeToMemory;
  s_written.clear();
  detail::LineSink sink(noFile());
  try {
    for (std::size_t i = 0; i < root.sectionCount(); ++i) {
      detail::cfgWriteSection(sink, root.sectionAt(i));
    }
    sink.flush();
  } catch (const QSException&) {
    return std::nullopt;
  }
  return s_written;
}

std::string showFields(const QSCfgDataSection& root) {
  struct Pending {
    const QSCfgDataSection* section;
    std::string path;
  };
  std::string shown;
  std::vector<Pending> pending;
  pending.push_back({&root, {}});
  while (!pending.empty()) {
    const Pending next = std::move(pending.back());
    pending.pop_back();
    showSection(*next.section, next.path, shown);
    for (std::size_t i = next.section->sectionCount(); i-- > 0;) {
      const QSCfgDataSection& child = next.section->sectionAt(i);
      pending.push_back({&child, next.path + '\n' + child.name()});
    }
  }
  return shown;
}

void demand(bool holds, const char* text) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", text);
    std::abort();
  }
}

}  // namespace LTLib::Fuzzing
