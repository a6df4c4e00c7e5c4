// What the tool can be asked for: its verbs, and what each of them takes.
//
// The rows stand in commands/verbs.cpp. The parser and its help are made from them, and so is
// whatever else tells of the verbs.
#ifndef LTREG_CLI_VERB_H
#define LTREG_CLI_VERB_H

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "ltreg/cli/request.h"

namespace ltreg {

/// An operand or an option of a verb.
struct Parameter {
  /// The field that takes it. By its type it is a flag, a number of seconds, a word, or any number
  /// of words.
  using Field = std::variant<bool Request::*, int Request::*, std::optional<std::string> Request::*,
                             std::vector<std::string> Request::*>;

  const char* name;  // of an operand in capitals, of an option with its dashes
  const char* about;
  Field field;
  bool required = false;
  /// What is wrong with a word; empty if nothing is.
  std::string (*fault)(const std::string& word) = nullptr;
  std::vector<std::string> choices{};  // the words that there are; empty where any will do

  [[nodiscard]] bool isOption() const { return name[0] == '-'; }
  [[nodiscard]] bool takesWord() const { return !std::holds_alternative<bool Request::*>(field); }
  [[nodiscard]] bool takesSeveral() const {
    return std::holds_alternative<std::vector<std::string> Request::*>(field);
  }
  /// Whether a word is its name, or one of its two.
  [[nodiscard]] bool isNamed(std::string_view word) const {
    const std::string_view names = name;
    const std::size_t comma = names.find(',');
    return word == names.substr(0, comma) ||
           (comma != std::string_view::npos && word == names.substr(comma + 1));
  }
};

struct Verb {
  const char* name;
  const char* about;
  Command command;
  std::vector<Parameter> parameters;
  const char* group = nullptr;  // the word that stands in front; its own row comes first
  bool hidden = false;          // from the help: the tool alone asks for it
  bool takesSlashes = false;    // for the dash of an option
};

/// The options that every verb takes.
[[nodiscard]] const std::vector<Parameter>& commonOptions();

/// All that a verb takes: what its row says, and of the common options those that it has not itself
/// in another sense.
[[nodiscard]] std::vector<const Parameter*> parametersOf(const Verb& verb);

/// A row that is no verb, but the first word of several.
[[nodiscard]] inline Verb verbGroup(const char* name, const char* about) {
  return {name, about, nullptr, {}};
}

}  // namespace ltreg

#endif  // LTREG_CLI_VERB_H
