// What makes no sense is passed over, so that one bad line costs no other. Two things end a reading,
// since all that follows would go to the wrong place: a header that leads to no section, and a
// quoted value that neither ends nor goes on.
#include "ltlib/fileregistry/text/text_reader.h"

#include <algorithm>
#include <cstdio>

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
void cutPiecesAtNul(std::string& line) {
  std::string kept;
  for (std::size_t start = 0; start < line.size(); start += kLinePiece) {
    const std::string_view piece = std::string_view(line).substr(start, kLinePiece);
    kept += piece.substr(0, piece.find('\0'));
  }
  line = std::move(kept);
}

// Every line counts, a continuation too, so that messages tell the line that an editor shows.
bool takeLine(ReadContext& context, std::string& line) {
  if (!cfgReadLine(context.source, line)) {
    return false;
  }
  ++context.lineCount;
  return true;
}

// A report that does not fit is cut; the line number stands at its front.
void reportSyntax(const ReadContext& context, const char* hint, const std::string& line) {
  char text[256];
  std::snprintf(text, sizeof text,
                "#***** ERROR ***** : Syntax error in command line # %i\n%s\t%s\n\n",
                static_cast<int>(context.lineCount), hint, line.c_str());
  context.report(text);
}

// Makes the tree of what is read. A value ahead of the first header has nowhere to go; it is parsed
// all the same, since its continuations are no lines of their own.
class TreeMaker final : public LineVisitor {
 public:
  TreeMaker(ReadContext& context, QSCfgDataSection& root) : m_context(context), m_root(root) {}

  bool takeHeader(const std::string& line) override {
    m_section = cfgParseHeader(line, m_root);
    return m_section != nullptr;
  }

  bool takeValue(const std::string& line) override {
    std::unique_ptr<QSCfgDataFieldString> field = cfgParseField(m_context, line);
    if (field != nullptr && m_section != nullptr) {
      m_section->addField(std::move(field));
    }
    return true;
  }

 private:
  ReadContext& m_context;
  QSCfgDataSection& m_root;
  QSCfgDataSection* m_section = nullptr;
};

}  // namespace

UnendedValue::UnendedValue()
    : QSException("kFileRegistry", __LINE__, kFailure, "Registry file parsing error") {}

void printSyntaxMessage(const char* text) {
  std::fputs(text, stdout);
}

bool cfgReadLine(LineSource& source, std::string& line) {
  line.clear();
  if (!source.appendLine(line)) {
    return false;
  }
  if (line.find('\0') != std::string::npos) {
    cutPiecesAtNul(line);
  }
  return true;
}

bool cfgVisitLines(ReadContext& context, LineVisitor& visitor) {
  std::string line;
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

ReadResult cfgReadText(ReadContext& context, QSCfgDataSection& root) {
  TreeMaker maker(context, root);
  return cfgVisitLines(context, maker) ? ReadResult::kWhole : ReadResult::kBadHeader;
}

QSCfgDataSection* cfgParseHeader(std::string_view line, QSCfgDataSection& root) {
  QSCfgDataSection* section = &root;
  const bool whole = splitHeader(
      line, [&](std::string_view component) { section = &section->findOrAddSection(component); });
  return whole ? section : nullptr;
}

std::unique_ptr<QSCfgDataFieldString> cfgParseField(ReadContext& context, const std::string& line) {
  const std::size_t nameEnd = line.find('"', 1);
  if (nameEnd == std::string::npos || nameEnd == 1) {
    return nullptr;
  }
  // A name may hold whatever the following searches look for, so they start behind it.
  const std::size_t equals = line.find('=', nameEnd + 1);
  const std::size_t colon =
      equals != std::string::npos ? line.find(':', equals + 1) : std::string::npos;
  if (colon == std::string::npos) {
    return nullptr;
  }
  const TypeWord* type =
      findTypeWord(std::string_view(line).substr(equals + 1, colon - equals - 1));
  if (type == nullptr) {
    return nullptr;
  }
  // Both look for the type word again, behind the name: a word between name and sign may hold it, and
  // stores hold values that were read so.
  const auto parse = type->quoted ? cfgParseQuoted : cfgParseBare;
  return std::make_unique<QSCfgDataFieldString>(std::string_view(line).substr(1, nameEnd - 1),
                                                type->code,
                                                parse(context, line, nameEnd + 1, type->word));
}

// The last mark of all the text so far decides, old parts included: a quote ends it, and a backslash
// joins it to the next line. A quote of an earlier line can thus end a value whose later lines have
// no mark.
std::string cfgParseQuoted(ReadContext& context, const std::string& line, std::size_t start,
                           std::string_view typeWord) {
  const std::size_t open = line.find('"', line.find(typeWord, start) + typeWord.size());
  if (open == std::string::npos || open + 1 == line.size()) {
    reportSyntax(context, "\tString value is delimited by quotes\n", line);
    return {};
  }
  std::string text = line.substr(open + 1);
  std::string continuation;
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
      return text;
    }
    text += continuation;
  }
}

std::string cfgParseBare(ReadContext& context, const std::string& line, std::size_t start,
                         std::string_view typeWord) {
  const std::size_t colon = line.find(typeWord, start) + typeWord.size();
  std::string text = colon < line.size() ? line.substr(colon + 1) : std::string();
  if (text.empty()) {
    reportSyntax(context, "", line);
  }
  std::string continuation;
  while (!text.empty() && text.back() == '\\') {
    text.pop_back();
    if (!takeLine(context, continuation)) {
      break;
    }
    text += continuation;
  }
  return text;
}

}  // namespace LTLib::detail
