// What makes no sense is passed over, so that one bad line costs no other. Two things end a reading,
// since all that follows would go to the wrong place: a header that leads to no section, and a
// quoted value that neither ends nor goes on.
#include "ltlib/fileregistry/text/text_reader.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/text/text_writer.h"
#include "ltlib/fileregistry/tree/folded_name.h"
#include "ltlib/fileregistry/tree/key_path.h"
#include "ltlib/foundation/kqsresult.h"

namespace LTLib::detail {
namespace {

// What a buffer of 8192 bytes takes of a line beside its terminator. It shows in lines with a NUL
// alone, which stores must go on to be read from as they always were.
constexpr std::size_t kLinePiece = 8191;

struct TypeWord {
  std::string_view word;
  QSCfgTypeCode code;
  bool quoted;
};

constexpr TypeWord kTypeWords[] = {
    {"string", kCfgString, true},  {"dir", kCfgDir, true},
    {"ulong", kCfgULong, false},   {"dword", kCfgULong, false},
    {"binary", kCfgBinary, false}, {"liststring", kCfgListString, false},
};

const TypeWord* findTypeWord(std::string_view word) {
  const auto* found = std::find_if(std::begin(kTypeWords), std::end(kTypeWords),
                                   [&](const TypeWord& row) { return row.word == word; });
  return found != std::end(kTypeWords) ? found : nullptr;
}

// Cuts each piece of the line at its first NUL, as the pieces are texts that end there.
std::string cutPiecesAtNul(std::string_view line) {
  std::string kept;
  for (std::size_t start = 0; start < line.size(); start += kLinePiece) {
    const std::string_view piece = line.substr(start, kLinePiece);
    kept += piece.substr(0, piece.find('\0'));
  }
  return kept;
}

// Every line counts, a continuation too, so that messages tell the line that an editor shows.
bool takeLine(ReadContext& context, std::string_view& line) {
  if (!cfgReadLine(context.source, line)) {
    return false;
  }
  ++context.lineCount;
  return true;
}

// A report that does not fit is cut; the line number stands at its front.
void reportSyntax(const ReadContext& context, const char* hint, std::string_view line) {
  char text[256];
  std::snprintf(text, sizeof text,
                "#***** ERROR ***** : Syntax error in command line # %i\n%s\t%s\n\n",
                static_cast<int>(context.lineCount), hint, std::string(line).c_str());
  context.report(text);
}

// Makes the tree of what is read. The fields of a key come into its list together, which gets just
// the room that they need. A value ahead of the first header has nowhere to go; it is parsed all the
// same, since its continuations are no lines of their own.
class TreeMaker final : public LineVisitor {
 public:
  TreeMaker(ReadContext& context, QSCfgTree& tree) : m_context(context), m_tree(tree) {}

  bool takeHeader(std::string_view line) override {
    bringIn();
    m_depth = 0;
    return splitHeader(line, [&](std::string_view name) { goDown(name); });
  }

  bool takeValue(std::string_view line) override {
    QSCfgDataField field = cfgParseField(m_context, line);
    if (field != nullptr && m_depth != 0) {
      m_fields.push_back(std::move(field));
    }
    return true;
  }

  void bringIn() {
    if (!m_fields.empty()) {
      m_way[m_depth - 1]->fields().append(m_fields);
      m_fields.clear();
    }
  }

 private:
  // Most headers go a part of the way that the last one went.
  void goDown(std::string_view name) {
    if (m_depth == m_way.size() || !equalNames(m_way[m_depth]->name(), name)) {
      m_way.resize(m_depth);
      m_way.push_back(
          &m_tree.findOrAddSection(m_depth != 0 ? *m_way[m_depth - 1] : m_tree.top(), name));
    }
    ++m_depth;
  }

  ReadContext& m_context;
  QSCfgTree& m_tree;
  std::vector<QSCfgDataSection*> m_way;  // the sections of this header, and of the last one below
  std::size_t m_depth = 0;               // how many are this header's; 0 ahead of the first one
  std::vector<QSCfgDataField> m_fields;  // of its section, not brought in yet
};

// A bare text that a file ends in behind its last backslash may end in another one.
QSCfgDataField::Form formOf(std::string_view line, std::size_t nameEnd, const TypeWord& type,
                            std::string_view text) {
  using Form = QSCfgDataField::Form;
  if (!type.quoted && text.ends_with('\\')) {
    return Form::kLacks;
  }
  const std::string_view opening = cfgOpeningOf(type.code);
  return line.substr(nameEnd).starts_with(opening) &&
                 text.data() == line.data() + nameEnd + opening.size()
             ? Form::kInLine
             : Form::kHas;
}

}  // namespace

UnendedValue::UnendedValue()
    : QSException("kFileRegistry", __LINE__, kFailure, "Registry file parsing error") {}

void printSyntaxMessage(const char* text) {
  std::fputs(text, stdout);
}

bool cfgReadLine(LineSource& source, std::string_view& line) {
  if (!source.takeLine(line)) {
    return false;
  }
  if (source.hasNul() && line.find('\0') != std::string_view::npos) {
    line = source.keep(cutPiecesAtNul(line));
  }
  return true;
}

bool cfgVisitLines(ReadContext& context, LineVisitor& visitor) {
  std::string_view line;
  bool goesOn = true;
  while (goesOn && takeLine(context, line)) {
    const char first = line.empty() ? '\0' : line.front();
    // Anything else at the front, a blank included, makes a line nothing.
    if (first == '"') {
      goesOn = visitor.takeValue(line);
    } else if (first == '[') {
      goesOn = visitor.takeHeader(line);
    } else {
      visitor.passOver(line);
    }
  }
  return goesOn;
}

ReadResult cfgReadText(ReadContext& context, QSCfgTree& tree) {
  TreeMaker maker(context, tree);
  try {
    const bool whole = cfgVisitLines(context, maker);
    maker.bringIn();
    return whole ? ReadResult::kWhole : ReadResult::kBadHeader;
  } catch (const QSException&) {
    maker.bringIn();
    throw;
  }
}

QSCfgDataField cfgParseField(ReadContext& context, std::string_view line) {
  const std::size_t nameEnd = line.find('"', 1);
  if (nameEnd == std::string_view::npos || nameEnd == 1) {
    return {};
  }
  // A name may hold whatever the following searches look for, so they start behind it.
  const std::size_t equals = line.find('=', nameEnd + 1);
  const std::size_t colon =
      equals != std::string_view::npos ? line.find(':', equals + 1) : std::string_view::npos;
  if (colon == std::string_view::npos) {
    return {};
  }
  const std::string_view word = line.substr(equals + 1, colon - equals - 1);
  const TypeWord* type = findTypeWord(word);
  if (type == nullptr) {
    return {};
  }
  // The word is sought again, behind the name: what stands between name and sign may hold it, and
  // stores hold values that were read so.
  const std::size_t wordEnd =
      equals == nameEnd + 1 ? colon : line.find(word, nameEnd + 1) + word.size();
  const auto parse = type->quoted ? cfgParseQuoted : cfgParseBare;
  const std::string_view text = parse(context, line, wordEnd);
  return {line.substr(1, nameEnd - 1), type->code, text, formOf(line, nameEnd, *type, text)};
}

// The last mark of all the text so far decides, old parts included: a quote ends it, and a backslash
// joins it to the next line. A quote of an earlier line can thus end a value whose later lines have
// no mark.
std::string_view cfgParseQuoted(ReadContext& context, std::string_view line, std::size_t start) {
  const std::size_t open = line.find('"', start);
  if (open == std::string_view::npos || open + 1 == line.size()) {
    reportSyntax(context, "\tString value is delimited by quotes\n", line);
    return {};
  }
  const std::string_view rest = line.substr(open + 1);
  if (rest.back() == '"') {
    return rest.substr(0, rest.size() - 1);
  }
  std::string text(rest);
  std::string_view continuation;
  for (;;) {
    const std::size_t mark = text.find_last_of("\"\\");
    if (mark == std::string::npos) {
      throw UnendedValue();
    }
    const bool closed = text[mark] == '"';
    // What was searched in vain goes with the mark, so that no byte is searched twice, however many
    // lines the text takes.
    text.resize(mark);
    if (closed || !takeLine(context, continuation)) {
      return context.source.keep(text);
    }
    text += continuation;
  }
}

std::string_view cfgParseBare(ReadContext& context, std::string_view line, std::size_t start) {
  const std::string_view rest = line.substr(std::min(start + 1, line.size()));
  if (rest.empty()) {
    reportSyntax(context, "", line);
  }
  if (!rest.ends_with('\\')) {
    return rest;
  }
  std::string text(rest);
  std::string_view continuation;
  while (text.ends_with('\\')) {
    text.pop_back();
    if (!takeLine(context, continuation)) {
      break;
    }
    text += continuation;
  }
  return context.source.keep(text);
}

}  // namespace LTLib::detail
