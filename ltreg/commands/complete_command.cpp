// The words that can come next on a command line, which the shells' completion asks for. The table
// of verbs tells what stands where, and the registry itself which keys, names and classes there are.
#include <algorithm>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/verbs.h"
#include "ltreg/component/component_entry.h"

namespace ltreg {
namespace {

using Words = std::vector<std::string>;

// What the words ahead of the last one have settled.
struct Place {
  const Verb* verb = nullptr;
  std::string group;
  const Parameter* option = nullptr;  // whose word comes next
  Words operands;
};

class Completion {
 public:
  explicit Completion(const Words& words)
      : m_prefix(words.empty() ? "" : words.back()), m_verbs(allVerbs()) {
    m_request.quiet = true;
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
      pass(words[i]);
    }
  }

  // What begins as the last word does.
  [[nodiscard]] Words candidates() const {
    Words found = m_place.verb == nullptr     ? verbs()
                  : m_place.option != nullptr ? wordsOf(*m_place.option)
                  : m_prefix.starts_with('-') ? options()
                  : parameterAt() != nullptr  ? wordsOf(*parameterAt())
                                              : Words();
    std::erase_if(found, [&](const std::string& word) {
      return word.size() < m_prefix.size() ||
             !sameName(std::string_view(word).substr(0, m_prefix.size()), m_prefix);
    });
    return found;
  }

 private:
  void pass(const std::string& word) {
    if (m_place.option != nullptr) {
      if (const auto* field =
              std::get_if<std::optional<std::string> Request::*>(&m_place.option->field)) {
        m_request.** field = word;
      }
      m_place.option = nullptr;
    } else if (word.starts_with('-')) {
      m_place.option = optionOf(word);
    } else if (m_place.verb == nullptr) {
      passVerb(word);
    } else {
      m_place.operands.push_back(word);
    }
  }

  void passVerb(const std::string& word) {
    for (const Verb& verb : m_verbs) {
      if (verb.name == word && m_place.group == (verb.group != nullptr ? verb.group : "")) {
        if (verb.command == nullptr) {
          m_place.group = word;
        } else {
          m_place.verb = &verb;
        }
        return;
      }
    }
  }

  // An option that a word follows; null for a flag.
  [[nodiscard]] const Parameter* optionOf(const std::string& word) const {
    for (const Parameter* parameter :
         m_place.verb != nullptr ? parametersOf(*m_place.verb) : parametersOf({})) {
      if (parameter->takesWord() && parameter->isNamed(word)) {
        return parameter;
      }
    }
    return nullptr;
  }

  // The operand that comes next; the last one may take several words.
  [[nodiscard]] const Parameter* parameterAt() const {
    std::size_t left = m_place.operands.size();
    for (const Parameter& parameter : m_place.verb->parameters) {
      if (!parameter.isOption() && (parameter.takesSeveral() || left-- == 0)) {
        return &parameter;
      }
    }
    return nullptr;
  }

  [[nodiscard]] Words verbs() const {
    Words names;
    for (const Verb& verb : m_verbs) {
      if (!verb.hidden && m_place.group == (verb.group != nullptr ? verb.group : "")) {
        names.emplace_back(verb.name);
      }
    }
    return names;
  }

  // The long names.
  [[nodiscard]] Words options() const {
    Words names;
    for (const Parameter* parameter : parametersOf(*m_place.verb)) {
      if (const std::string_view name = parameter->name; parameter->isOption()) {
        names.emplace_back(name.substr(name.find("--")));
      }
    }
    return names;
  }

  [[nodiscard]] Words wordsOf(const Parameter& row) const {
    if (!row.choices.empty()) {
      return row.choices;
    }
    const std::string_view parameter = row.name;
    // A registry that cannot be read completes nothing; the command itself will tell why.
    try {
      const auto isOneOf = [&](std::initializer_list<std::string_view> names) {
        return std::find(names.begin(), names.end(), parameter) != names.end();
      };
      return parameter == "ROOT"                        ? roots("")
             : isOneOf({"KEY", "NEWKEY", "A", "B"})     ? keys()
             : isOneOf({"NAME", "NAMES", "-v,--value"}) ? names()
             : parameter == "CLASS"                     ? classes()
                                                        : Words();
    } catch (const std::exception&) {
      return {};
    }
  }

  static Words roots(const char* ending) {
    Words names;
    for (const char* name : {"HKLM", "HKCU", "HKCC", "HKU", "HKCR"}) {
      names.push_back(std::string(name) + ending);
    }
    return names;
  }

  [[nodiscard]] Words keys() const {
    const std::size_t end = m_prefix.rfind('\\');
    if (end == std::string::npos) {
      return roots("\\");
    }
    const std::string parent = m_prefix.substr(0, end + 1);
    KeyArgument key = parseKey(parent);
    Session session(m_request, key, Access::kRead);
    Words names;
    for (const std::string& name : session.subKeys(key.path)) {
      names.push_back(parent + name);
    }
    return names;
  }

  [[nodiscard]] Words names() const {
    if (m_place.operands.empty()) {
      return {};
    }
    KeyArgument key = parseKey(m_place.operands.front());
    return Session(m_request, key, Access::kRead).valueNames(key.path);
  }

  // By their keys alone, since a look at each entry would take its time where there are thousands.
  [[nodiscard]] Words classes() const {
    KeyArgument key = classesKey();
    Session session(m_request, key, Access::kRead);
    return session.keyExists(key.path) ? session.subKeys(key.path) : Words();
  }

  std::string m_prefix;
  std::vector<Verb> m_verbs;
  Request m_request;
  Place m_place;
};

// Each asks the tool for the words. A key goes on, so that no blank is put behind one.
constexpr char kBash[] = R"(_ltreg() {
  local word=${COMP_WORDS[COMP_CWORD]} words=("${COMP_WORDS[@]:1:COMP_CWORD}") i
  for i in "${!words[@]}"; do
    case ${words[i]} in
      \'*) words[i]=${words[i]#\'}; words[i]=${words[i]%\'} ;;
      \"*) words[i]=${words[i]#\"}; words[i]=${words[i]%\"} ;;
      *) words[i]=${words[i]//\\\\/\\} ;;
    esac
  done
  mapfile -t COMPREPLY < <(ltreg complete -- "${words[@]}" 2>/dev/null)
  if [[ $word != [\'\"]* ]]; then
    for i in "${!COMPREPLY[@]}"; do
      printf -v "COMPREPLY[i]" %q "${COMPREPLY[i]}"
    done
  fi
  if [[ ${COMPREPLY[0]-} == *\\* ]]; then
    compopt -o nospace
  fi
}
complete -o default -F _ltreg ltreg
)";

constexpr char kZsh[] = R"(#compdef ltreg
local -a found
found=("${(@f)$(ltreg complete -- "${(@)${(@Q)words[2,CURRENT]}#[\'\"]}" 2>/dev/null)}")
if [[ -n ${found[1]} ]]; then
  if [[ ${found[1]} == *\\* ]]; then
    compadd -S '' -- "${found[@]}"
  else
    compadd -- "${found[@]}"
  fi
else
  _files
fi
)";

constexpr char kFish[] = R"(function __ltreg_complete
  set -l words (commandline -opc)
  set -l word (commandline -ct)
  if string match -qr '^[\'"]' -- $word
    set word (string sub -s 2 -- $word)
  else
    set word (string unescape -- $word)
  end
  ltreg complete -- $words[2..] "$word" 2>/dev/null
end
complete -c ltreg -a '(__ltreg_complete)'
)";

}  // namespace

ExitCode completeWords(const Request& request, Output& output) {
  for (const std::string& word : Completion(request.values).candidates()) {
    if (escapeControls(word) == word) {
      output.line(word);
    }
  }
  return ExitCode::kDone;
}

ExitCode showCompletion(const Request& request, Output& output) {
  output.bytes(*request.text == "bash" ? kBash : *request.text == "zsh" ? kZsh : kFish);
  return ExitCode::kDone;
}

}  // namespace ltreg
