#include "ltlib/fileregistry/text/text_reader.h"

#include <algorithm>
#include <cstdio>

#include "ltlib/fileregistry/text/quoted_text.h"
#include "ltlib/fileregistry/tree/key_path.h"
#include "ltlib/foundation/kqsresult.h"

namespace LTLib::detail {
namespace {

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

bool readContinuation(ReadContext& context, std::string& line) {
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

[[noreturn]] void throwParseError(int line) {
  throw QSException("kFileRegistry", line, kFailure, "Registry file parsing error");
}

}  // namespace

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

ReadResult cfgReadText(ReadContext& context, QSCfgDataSection& root) {
  QSCfgDataSection* section = nullptr;
  std::string line;
  while (cfgReadLine(context.source, line)) {
    ++context.lineCount;
    const char first = line.empty() ? '\0' : line.front();
    if (first == '"') {
      // A line ahead of the first header is taken with its continuations and dropped.
      std::unique_ptr<QSCfgDataFieldString> field = cfgParseField(context, line);
      if (field != nullptr && section != nullptr) {
        section->addField(std::move(field));
      }
    } else if (first == '[') {
      section = cfgParseHeader(line, root);
      if (section == nullptr) {
        return ReadResult::kBadHeader;
      }
    }
  }
  return ReadResult::kWhole;
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
  const auto parse = type->quoted ? cfgParseQuoted : cfgParseBare;
  return std::make_unique<QSCfgDataFieldString>(std::string_view(line).substr(1, nameEnd - 1),
                                                type->code,
                                                parse(context, line, nameEnd + 1, type->word));
}

std::string cfgParseQuoted(ReadContext& context, const std::string& line, std::size_t start,
                           std::string_view typeWord) {
  const std::size_t open = line.find('"', line.find(typeWord, start) + typeWord.size());
  if (open == std::string::npos || open + 1 == line.size()) {
    reportSyntax(context, "\tString value is delimited by quotes\n", line);
    return {};
  }
  const std::string_view first = std::string_view(line).substr(open + 1);
  const std::size_t mark = first.find_last_of("\"\\");
  if (mark != std::string_view::npos && first[mark] == '"') {
    return std::string(first.substr(0, mark));
  }
  QuotedText text(first);
  std::string continuation;
  while (!text.closed()) {
    if (!text.dropBackslash()) {
      throwParseError(__LINE__);
    }
    if (!readContinuation(context, continuation)) {
      return text.whole();
    }
    text.append(continuation);
  }
  return text.upToLastQuote();
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
    if (!readContinuation(context, continuation)) {
      break;
    }
    text += continuation;
  }
  return text;
}

}  // namespace LTLib::detail
