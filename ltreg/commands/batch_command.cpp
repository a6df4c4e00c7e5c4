// Many verbs, one save or none. A line that fails ends all before anything is saved.
#include <algorithm>
#include <iostream>
#include <iterator>
#include <string_view>

#include "ltreg/cli/arguments.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/verbs.h"
#include "ltreg/registry/session.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

// Those that work on one root and write nothing else.
constexpr Command kAllowed[] = {setValue,  deleteEntry, copyKey,  renameEntry, importFile,
                                getValues, listKey,     showTree, findEntries};

// Takes one line apart into words as a shell does, with nothing in them replaced.
class LineWords {
 public:
  explicit LineWords(std::string_view line) : m_rest(line) {}

  std::vector<std::string> all() {
    for (;;) {
      m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \t\r"), m_rest.size()));
      if (m_rest.empty() || m_rest.front() == '#') {
        return std::move(m_words);
      }
      m_words.emplace_back();
      while (!m_rest.empty() && m_rest.find_first_of(" \t\r") != 0) {
        takePart(m_words.back());
      }
    }
  }

 private:
  char take() {
    if (m_rest.empty()) {
      throw Failure(ExitCode::kBadInput,
                    "a quote or a backslash is the last of the line; what it"
                    " stands for is missing");
    }
    const char first = m_rest.front();
    m_rest.remove_prefix(1);
    return first;
  }

  void takePart(std::string& word) {
    const char first = take();
    if (first == '\\') {
      word += take();
    } else if (first == '\'' || first == '"') {
      takeQuoted(word, first);
    } else {
      word += first;
    }
  }

  // Within double quotes a backslash takes the meaning from the few that have one there.
  void takeQuoted(std::string& word, char quote) {
    for (char next = take(); next != quote; next = take()) {
      const bool escapes = quote == '"' && next == '\\' && m_rest.find_first_of("\"\\$`") == 0;
      word += escapes ? take() : next;
    }
  }

  std::string_view m_rest;
  std::vector<std::string> m_words;
};

void runLine(const Request& batch, CommandParser& parser, std::string_view line, Output& output) {
  const std::vector<std::string> words = LineWords(line).all();
  if (words.empty()) {
    return;
  }
  Invocation asked = parser.parse(words);
  Request& request = asked.request;
  if (std::find(std::begin(kAllowed), std::end(kAllowed), asked.command) == std::end(kAllowed)) {
    throw Failure(ExitCode::kUsage, inQuotes(words.front()) +
                                        " stands in no batch; those that look into one root and"
                                        " change it do");
  }
  if (request.store || request.backend || request.lockTimeout != 0 || request.force) {
    throw Failure(ExitCode::kUsage,
                  "--store, --backend, --timeout and --force go for the batch as a whole, behind"
                  " 'batch'");
  }
  request.store = batch.store;
  if (const ExitCode code = asked.command(request, output); code != ExitCode::kDone) {
    throw Failure(code, inQuotes(words.front()) + " has found nothing, or not all");
  }
}

std::string readStandardInput() {
  return {std::istreambuf_iterator<char>(std::cin), {}};
}

}  // namespace

ExitCode runBatch(const Request& request, Output& output) {
  const bool fromFile = request.file && *request.file != "-";
  const std::string text = fromFile ? readTextFile(*request.file) : readStandardInput();
  const std::string name = fromFile ? escapeControls(*request.file) : "standard input";
  const std::vector<Verb> verbs = allVerbs();
  CommandParser parser(verbs);
  SharedSession session(request, text.find('%') != std::string::npos);
  std::size_t number = 0;
  for (std::string_view rest = text; !rest.empty();) {
    ++number;
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    try {
      runLine(request, parser, line, output);
    } catch (const Failure& failure) {
      throw Failure(failure.code(), name + ':' + std::to_string(number) + ": " + failure.what() +
                                        "; nothing was changed");
    }
  }
  session.save();
  return ExitCode::kDone;
}

}  // namespace ltreg
