// Nothing is escaped: a line is written only if the reader brings its content back (file_form.h).
#include "ltlib/fileregistry/text/text_writer.h"

#include <vector>

#include "ltlib/fileregistry/text/file_form.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {
namespace {

[[noreturn]] void throwNoForm(int line, std::string_view path, const char* what) {
  std::string text = "the key ";
  text.append(path).append(what).append(" no line of a store file can hold");
  throw QSException("kFileRegistry", line, kFailure, text.c_str());
}

struct FieldForm {
  std::string_view opening;
  std::string_view closing;
};

FieldForm formOf(QSCfgTypeCode code) {
  switch (code) {
    case kCfgULong:
      return {"\"=ulong:", "\n"};
    case kCfgString:
      return {"\"=string:\"", "\"\n"};
    case kCfgDir:
      return {"\"=dir:\"", "\"\n"};
    case kCfgBinary:
      return {"\"=binary:", "\n"};
    case kCfgListString:
      return {"\"=liststring:", "\n"};
  }
  return {};
}

}  // namespace

// One call of the system for each line would take longer than all the rest of a save.
void LineSink::put(std::string_view text) {
  m_held += text;
  if (m_held.size() >= kPiece) {
    flush();
  }
}

void LineSink::flush() {
  if (Platform::fileCalls().write(m_file, m_held.data(), m_held.size()) !=
      Platform::FileResult::kDone) {
    const std::string text = "registry write failed: " + Platform::lastFileFailure();
    throw QSException("kFileRegistry", __LINE__, kFailure, text.c_str());
  }
  m_held.clear();
}

std::string cfgFieldLine(std::string_view name, QSCfgTypeCode code, std::string_view text) {
  const FieldForm form = formOf(code);
  std::string line;
  if (!form.opening.empty()) {
    line.reserve(1 + name.size() + form.opening.size() + text.size() + form.closing.size());
    line += '"';
    line.append(name).append(form.opening).append(text).append(form.closing);
  }
  return line;
}

void cfgWriteFields(LineSink& sink, const QSCfgDataSection& section, std::string_view path) {
  sink.put("[");
  sink.put(path);
  sink.put("]\n");
  for (std::size_t i = 0; i < section.fieldCount(); ++i) {
    const QSCfgDataField& field = section.fieldAt(i);
    // What a load brought in and no line can hold would spoil the file for the next reader.
    if (!fieldComesBack(field.name(), field.type(), field.getValue())) {
      throwNoForm(__LINE__, path, (" has the value " + field.name() + ", which").c_str());
    }
    sink.put(cfgFieldLine(field.name(), field.type(), field.getValue()));
  }
  sink.put("\n");
}

// Depth first without recursion, since a tree is as deep as its file says.
void cfgWriteSection(LineSink& sink, const QSCfgDataSection& section) {
  struct Level {
    const QSCfgDataSection* section;
    std::size_t nextChild;
  };
  std::vector<Level> levels;
  std::vector<std::string_view> names;
  std::string path;
  const auto enter = [&](const QSCfgDataSection& entered) {
    levels.push_back({&entered, 0});
    names.emplace_back(entered.name());
    path.append(path.empty() ? "" : "\\").append(entered.name());
    if (entered.fieldCount() != 0) {
      // A section without fields has no header, so that its name may be any.
      if (!headerComesBack(names)) {
        throwNoForm(__LINE__, path, " has a name that");
      }
      cfgWriteFields(sink, entered, path);
    }
  };
  enter(section);
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.nextChild < level.section->sectionCount()) {
      enter(level.section->sectionAt(level.nextChild++));
    } else {
      const std::size_t length = names.back().size();
      path.resize(path.size() - length - (levels.size() > 1 ? 1 : 0));
      names.pop_back();
      levels.pop_back();
    }
  }
}

}  // namespace LTLib::detail
