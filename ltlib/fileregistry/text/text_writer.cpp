// Nothing is escaped: a line is written only if the reader brings its content back (file_form.h).
#include "ltlib/fileregistry/text/text_writer.h"

#include <utility>
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

void LineSink::put(std::initializer_list<std::string_view> texts) {
  std::size_t size = 0;
  for (const std::string_view text : texts) {
    size += text.size();
  }
  if (size > kPiece - m_size) {
    flush();
  }
  if (size > kPiece) {
    for (const std::string_view text : texts) {
      write(text);
    }
    return;
  }
  for (const std::string_view text : texts) {
    m_size += text.copy(m_held.get() + m_size, text.size());
  }
}

void LineSink::flush() {
  write({m_held.get(), std::exchange(m_size, 0)});
}

void LineSink::write(std::string_view text) {
  if (Platform::fileCalls().write(m_file, text.data(), text.size()) !=
      Platform::FileResult::kDone) {
    const std::string words = "registry write failed: " + Platform::lastFileFailure();
    throw QSException("kFileRegistry", __LINE__, kFailure, words.c_str());
  }
}

std::string_view cfgOpeningOf(QSCfgTypeCode code) {
  return formOf(code).opening;
}

std::string cfgFieldLine(std::string_view name, QSCfgTypeCode code, std::string_view text) {
  const FieldForm form = formOf(code);
  std::string line = "\"";
  return line.append(name).append(form.opening).append(text).append(form.closing);
}

void cfgWriteFields(LineSink& sink, const QSCfgDataSection& section, std::string_view path) {
  sink.put({"[", path, "]\n"});
  const FieldList& fields = section.fields();
  for (std::size_t place = 0; place < fields.places(); ++place) {
    const QSCfgDataField& field = fields.field(place);
    if (field == nullptr) {
      continue;
    }
    // What a load brought in and no line can hold would spoil the file for the next reader.
    if (field.form() == QSCfgDataField::Form::kLacks) {
      throwNoForm(__LINE__, path,
                  (" has the value " + std::string(field.name()) + ", which").c_str());
    }
    const FieldForm form = formOf(field.type());
    if (field.form() == QSCfgDataField::Form::kInLine) {
      sink.put({field.line(), form.closing});
    } else {
      sink.put({"\"", field.name(), form.opening, field.getValue(), form.closing});
    }
  }
  sink.put({"\n"});
}

// Depth first without recursion, since a tree is as deep as its file says.
void cfgWriteSection(LineSink& sink, QSCfgDataSection& section) {
  std::vector<std::pair<QSCfgDataSection*, std::size_t>> levels;  // and their next children
  std::string held;
  const auto enter = [&](QSCfgDataSection& entered) {
    levels.emplace_back(&entered, 0);
    if (entered.fields().size() != 0) {
      const std::string_view path = entered.path(held);
      // A section without fields has no header, so that its name may be any.
      if (!sectionComesBack(entered)) {
        throwNoForm(__LINE__, path, " has a name that");
      }
      cfgWriteFields(sink, entered, path);
    }
  };
  enter(section);
  while (!levels.empty()) {
    auto& [parent, nextChild] = levels.back();
    if (nextChild < parent->sectionCount()) {
      enter(parent->sectionAt(nextChild++));
    } else {
      levels.pop_back();
    }
  }
}

}  // namespace LTLib::detail
