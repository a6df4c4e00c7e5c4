#include "ltreg/cli/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>
#include <string_view>
#include <type_traits>
#include <variant>

#include "ltreg/cli/about.h"
#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

constexpr char kHelp[] = "help";
constexpr char kStoreOption[] = "--store";
constexpr char kBackendOption[] = "--backend";
constexpr char kWaitOption[] = "--timeout";
constexpr char kPlain = '\1';  // in front of a word that CLI11 must take as it is
// The parser repeats a wrong word as a whole, however long it is.
constexpr std::size_t kMostShown = 400;
// A day: more is a mistyped number.
constexpr int kMostSeconds = 86400;

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
      }
    }
  };
  std::visit(add, parameter.field);
}

// What every verb takes. Each has them for itself, so that they may stand among its own words; what
// waits for a library has another meaning for the time.
void addCommonOptions(CLI::App& command, Request& request) {
  command.add_option(kStoreOption, request.store, kAboutStore);
  command.add_option(kBackendOption, request.backend, kAboutBackend)
      ->check(CLI::IsMember(std::set<std::string>{kFileBackend, kSystemBackend}));
  if (command.get_option_no_throw(kWaitOption) == nullptr) {
    command.add_option(kWaitOption, request.lockTimeout, kAboutWait)
        ->check(CLI::Range(1, kMostSeconds));
  }
}

void addVerb(CLI::App& app, Invocation& asked, const Verb& verb) {
  CLI::App& parent = verb.group != nullptr ? *app.get_subcommand(verb.group) : app;
  CLI::App& command = *parent.add_subcommand(verb.name, verb.about);
  if (verb.command == nullptr) {
    command.require_subcommand(1);
    return;
  }
  command.callback([&asked, run = verb.command] { asked.command = run; });
  if (verb.hidden) {
    command.group("");
  }
  for (const Parameter& parameter : verb.parameters) {
    addParameter(command, asked.request, parameter);
  }
  addCommonOptions(command, asked.request);
}

std::string unmarked(const std::string& word) {
  return word.substr(word.starts_with(kPlain) ? 1 : 0);
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
  const bool wantsCommand =
      !innermost->get_subcommands([](const CLI::App*) { return true; }).empty();
  if (wantsCommand && !unknown.empty()) {
    return inQuotes(unmarked(unknown.front())) + " is no command" + help + ')';
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
    return parameter.name == option && !std::holds_alternative<bool Request::*>(parameter.field);
  };
  return option == kStoreOption || option == kBackendOption || option == kWaitOption ||
         std::any_of(verbs.begin(), verbs.end(), [&](const Verb& verb) {
           return std::any_of(verb.parameters.begin(), verb.parameters.end(), takes);
         });
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

void unmark(Request& request) {
  for (std::optional<std::string>* word :
       {&request.key, &request.target, &request.name, &request.text, &request.clsid, &request.file,
        &request.fallback, &request.outputFile, &request.take, &request.store}) {
    if (*word) {
      *word = unmarked(**word);
    }
  }
  for (std::string& value : request.values) {
    value = unmarked(value);
  }
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
    app.parse(markPlainWords(verbFirst(words, m_state->verbs)));
    unmark(asked.request);
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
