#include "ltreg/cli/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>
#include <type_traits>
#include <variant>

#include "ltreg/cli/about.h"
#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

constexpr char kHelp[] = "help";
constexpr char kPlain = '\1';  // in front of a word that CLI11 must take as it is
// The parser repeats a wrong word as a whole, however long it is.
constexpr std::size_t kMostShown = 400;
// A day: more is a mistyped number.
constexpr int kMostSeconds = 86400;

std::string unmarked(const std::string& word) {
  return word.substr(word.starts_with(kPlain) ? 1 : 0);
}

std::string faultOfChoice(const std::string& word, const std::vector<std::string>& choices) {
  if (std::find(choices.begin(), choices.end(), word) != choices.end()) {
    return {};
  }
  std::string all;
  for (const std::string& choice : choices) {
    all += (all.empty() ? "" : ", ") + choice;
  }
  return inQuotes(word) + " is none of " + all + didYouMean(word, choices);
}

// Lets the parser fill the field of a parameter.
void addParameter(CLI::App& command, Request& request, const Parameter& parameter) {
  const auto add = [&](auto field) {
    auto& place = request.*field;
    using Place = std::remove_reference_t<decltype(place)>;
    if constexpr (std::is_same_v<Place, bool>) {
      command.add_flag(parameter.name, place, parameter.about);
    } else {
      CLI::Option& option = *command.add_option(parameter.name, place, parameter.about);
      option.required(parameter.required);
      if constexpr (std::is_same_v<Place, int>) {
        option.check(CLI::Range(1, kMostSeconds));
      } else if (parameter.fault != nullptr) {
        option.check(parameter.fault);
      } else if (!parameter.choices.empty()) {
        option.check([choices = parameter.choices](const std::string& word) {
          return faultOfChoice(unmarked(word), choices);
        });
      }
    }
  };
  std::visit(add, parameter.field);
}

void unmark(Request& request, const Verb& verb) {
  const auto unmarkField = [&](auto field) {
    auto& place = request.*field;
    using Place = std::remove_reference_t<decltype(place)>;
    if constexpr (std::is_same_v<Place, std::optional<std::string>>) {
      if (place) {
        place = unmarked(*place);
      }
    } else if constexpr (std::is_same_v<Place, std::vector<std::string>>) {
      std::transform(place.begin(), place.end(), place.begin(), unmarked);
    }
  };
  for (const Parameter* parameter : parametersOf(verb)) {
    std::visit(unmarkField, parameter->field);
  }
}

void addVerb(CLI::App& app, Invocation& asked, const Verb& verb) {
  CLI::App& parent = verb.group != nullptr ? *app.get_subcommand(verb.group) : app;
  CLI::App& command = *parent.add_subcommand(verb.name, verb.about);
  if (verb.command == nullptr) {
    command.require_subcommand(1);
    return;
  }
  command.callback([&asked, &verb] {
    asked.command = verb.command;
    unmark(asked.request, verb);
  });
  if (verb.hidden) {
    command.group("");
  }
  // Each verb has the common ones for itself, so that they may stand among its own words.
  for (const Parameter* parameter : parametersOf(verb)) {
    addParameter(command, asked.request, *parameter);
  }
}

std::vector<std::string> commandsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (!command->get_group().empty()) {
      names.push_back(command->get_name());
    }
  }
  return names;
}

std::string usageMessage(const CLI::App& app, const CLI::ParseError& error) {
  // The innermost verb that was understood, whose help is the one to read.
  std::string command = "ltreg";
  const CLI::App* innermost = &app;
  while (!innermost->get_subcommands().empty()) {
    innermost = innermost->get_subcommands().front();
    command += ' ' + innermost->get_name();
  }
  const std::string help = " (see '" + command + " --help'";
  const std::vector<std::string> unknown = innermost->remaining();
  if (!commandsOf(*innermost).empty() && !unknown.empty()) {
    const std::string word = unmarked(unknown.front());
    return inQuotes(word) + " is no command" + didYouMean(word, commandsOf(*innermost)) + help +
           ')';
  }
  const bool unexpected = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  std::string what = error.what();
  std::erase(what, kPlain);
  return escapeControls(std::string_view(what).substr(0, kMostShown)) + help +
         (unexpected ? "; words of your own that begin with '-' go behind '--')" : ")");
}

// Whether an option is followed by a word of its own, with whatever verb it may go.
bool takesWord(const std::string& option, const std::vector<Verb>& verbs) {
  const auto takes = [&](const Parameter& parameter) {
    return parameter.isNamed(option) && parameter.takesWord();
  };
  const auto anyTakes = [&](const std::vector<Parameter>& all) {
    return std::any_of(all.begin(), all.end(), takes);
  };
  return anyTakes(commonOptions()) ||
         std::any_of(verbs.begin(), verbs.end(),
                     [&](const Verb& verb) { return anyTakes(verb.parameters); });
}

bool isGroup(const std::string& word, const std::vector<Verb>& verbs) {
  return std::any_of(verbs.begin(), verbs.end(), [&](const Verb& verb) {
    return verb.command == nullptr && verb.name == word;
  });
}

// Brings options that stand ahead of the verb behind it, where the parser knows them, and reads
// 'help VERB' as 'VERB --help'. A lone --help or --version is about the tool and stays.
std::vector<std::string> verbFirst(std::vector<std::string> words, const std::vector<Verb>& verbs) {
  std::vector<std::string> options;
  std::size_t at = 0;
  while (at < words.size() && words[at].starts_with('-') && words[at] != "--") {
    const bool both = takesWord(words[at], verbs) && at + 1 < words.size();
    for (std::size_t end = at + (both ? 2 : 1); at < end; ++at) {
      options.push_back(words[at]);
    }
  }
  if (at < words.size() && words[at] == kHelp) {
    ++at;
    options.emplace_back("--help");
  }
  words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(at));
  const std::size_t verbWords = words.empty() ? 0 : isGroup(words[0], verbs) ? 2 : 1;
  words.insert(words.begin() + static_cast<std::ptrdiff_t>(std::min(verbWords, words.size())),
               options.begin(), options.end());
  return words;
}

// Reads '/v' as '-v' where people write it so, and '/ve' as the value without a name. The verb comes
// first.
std::vector<std::string> dashesForSlashes(const std::vector<std::string>& words,
                                          const std::vector<Verb>& verbs) {
  const auto isAsked = [&](const Verb& verb) {
    return verb.takesSlashes && !words.empty() && words.front() == verb.name;
  };
  const auto verb = std::find_if(verbs.begin(), verbs.end(), isAsked);
  if (verb == verbs.end()) {
    return words;
  }
  std::vector<std::string> read;
  for (const std::string& word : words) {
    const std::string option = word.starts_with('/') ? '-' + foldedName(word.substr(1)) : "";
    const bool isKnown =
        std::any_of(verb->parameters.begin(), verb->parameters.end(),
                    [&](const Parameter& parameter) { return parameter.isNamed(option); });
    if (option == "-ve") {
      read.insert(read.end(), {"-v", ""});
    } else {
      read.push_back(isKnown ? option : word);
    }
  }
  return read;
}

// Marks the words that CLI11 would read as more than plain words: those behind "--", and those
// that begin like its own notations for several values. The last word comes first, as it wants.
std::vector<std::string> markPlainWords(const std::vector<std::string>& words) {
  constexpr std::string_view kNotations("[{%\1", 4);
  std::vector<std::string> marked;
  bool allPlain = false;
  for (const std::string& word : words) {
    if (!allPlain && word == "--") {
      allPlain = true;
    } else {
      const bool plain = allPlain || kNotations.find(word[0]) != std::string_view::npos;
      marked.push_back(plain ? kPlain + word : word);
    }
  }
  std::reverse(marked.begin(), marked.end());
  return marked;
}

// The operating system's registry lies in no file that could be named.
void demandOneBackend(const Request& request) {
  if (request.store && request.backend == kSystemBackend) {
    throw Failure(ExitCode::kUsage,
                  "--store names a store file, and --backend os a registry without any; leave one"
                  " of them out");
  }
}

}  // namespace

struct CommandParser::State {
  explicit State(const std::vector<Verb>& all) : verbs(all) {}

  const std::vector<Verb>& verbs;
  Invocation asked;
  CLI::App app{std::string("Looks into a registry and changes it.\n\n") + kAboutKeys, "ltreg"};
};

CommandParser::CommandParser(const std::vector<Verb>& verbs)
    : m_state(std::make_unique<State>(verbs)) {
  CLI::App& app = m_state->app;
  app.allow_windows_style_options(false);
  app.set_version_flag("--version", "ltreg " LTREG_VERSION);
  app.require_subcommand(1);
  app.footer(std::string("\n") + kAboutExits + "\n'ltreg help COMMAND' tells about one command.");
  for (const Verb& verb : verbs) {
    addVerb(app, m_state->asked, verb);
  }
}

CommandParser::~CommandParser() = default;

Invocation CommandParser::parse(const std::vector<std::string>& words) {
  CLI::App& app = m_state->app;
  Invocation& asked = m_state->asked;
  asked = {};
  try {
    app.parse(markPlainWords(dashesForSlashes(verbFirst(words, m_state->verbs), m_state->verbs)));
    demandOneBackend(asked.request);
  } catch (const CLI::CallForHelp&) {
    asked.text = app.help();
    asked.command = nullptr;
  } catch (const CLI::CallForVersion& version) {
    asked.text = version.what();
    asked.command = nullptr;
  } catch (const CLI::ParseError& error) {
    throw Failure(ExitCode::kUsage, usageMessage(app, error));
  }
  return asked;
}

Invocation parseArguments(int count, const char* const* words, const std::vector<Verb>& verbs) {
  return CommandParser(verbs).parse({words + 1, words + count});
}

}  // namespace ltreg
