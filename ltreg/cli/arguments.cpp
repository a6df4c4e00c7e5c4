#include "ltreg/cli/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>
#include <string_view>
#include <vector>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/component/component_check.h"
#include "ltreg/registry/value.h"

namespace ltreg {
namespace {

constexpr char kAbout[] =
    "Looks into a registry and changes it.\n\n"
    "KEY is a root's name, a backslash and a path, as in 'HKLM\\Software\\Demo'. The roots are\n"
    "HKLM, HKCU, HKCC, HKU and HKCR, or by their long names HKEY_LOCAL_MACHINE and so on, in any\n"
    "letter case. References such as %SharedRoot% are replaced by the values of the configuration\n"
    "variables. Words of your own that begin with '-' go behind '--'.";

constexpr char kFooter[] =
    "\nExit codes: 0 done, 1 absent, 2 wrong usage, 3 bad input, 4 the store or its lock failed.\n"
    "Data goes to standard output, everything else to standard error.\n"
    "'ltreg COMMAND --help' tells about one command.";

constexpr char kName[] =
    "The value; a key's default value is 'Default', in the operating system's registry ''";
constexpr char kPlain = '\1';  // in front of a word that CLI11 must take as it is
constexpr std::size_t kMostShown = 400;
constexpr int kMostSeconds = 86400;

// One command under construction.
class CommandOptions {
 public:
  CommandOptions(CLI::App& app, Invocation& invocation, const char* name, const char* about,
                 Command command)
      : m_command(*app.add_subcommand(name, about)), m_request(invocation.request) {
    m_command.callback([&invocation, command] { invocation.command = command; });
    m_command.add_option("--store", m_request.store,
                         "The store file of the root, whatever the environment says");
    m_command
        .add_option("--backend", m_request.backend,
                    "Where roots lie, whatever programs go by: in store files, or in the operating"
                    " system's registry")
        ->check(CLI::IsMember(std::set<std::string>{kFileBackend, kSystemBackend}));
  }

  CommandOptions& key(const char* name = "KEY") {
    m_command.add_option(name, m_request.key, "Where to look")->required();
    return *this;
  }
  CommandOptions& root(bool required) {
    m_command.add_option("ROOT", m_request.key, "A root, as HKLM")->required(required);
    return *this;
  }
  CommandOptions& name(bool required, const char* about) {
    m_command.add_option("NAME", m_request.name, about)->required(required);
    return *this;
  }
  CommandOptions& word(const char* name, std::optional<std::string>& word, const char* about) {
    m_command.add_option(name, word, about)->required();
    return *this;
  }
  CommandOptions& flag(const char* name, bool& flag, const char* about) {
    m_command.add_flag(name, flag, about);
    return *this;
  }
  CommandOptions& timeout() {
    m_command
        .add_option("--timeout", m_request.timeout,
                    "Seconds until a library that hangs is given up; 10 without it")
        ->check(CLI::Range(1, kMostSeconds));
    return *this;
  }
  CommandOptions& json() {
    m_command.add_flag("--json", m_request.json, "Write JSON");
    return *this;
  }
  CommandOptions& recursive() {
    m_command.add_flag("-r,--recursive", m_request.recursive, "Delete the sub-keys, too");
    return *this;
  }
  void hide() { m_command.group(""); }
  CommandOptions& typedValues() {
    m_command
        .add_option("--type", m_request.type,
                    "The type; without it that of the present value, or else string. In store"
                    " files there are string, ulong, binary and list, in the operating system's"
                    " registry expand, qword, none, link and type-N as well")
        ->check([](const std::string& word) {
          return typeOfWord(word) ? std::string() : '\'' + word + "' is no type";
        });
    m_command.add_option("VALUE", m_request.values, "The value; for a list, any number of items");
    return *this;
  }

 private:
  CLI::App& m_command;
  Request& m_request;
};

std::string unmarked(const std::string& word) {
  return word.substr(word.starts_with(kPlain) ? 1 : 0);
}

std::string usageMessage(const CLI::App& app, const CLI::ParseError& error) {
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

// Marks the words that CLI11 would read as more than plain words: those behind "--", and those
// that begin like its own notations for several values. The last word comes first, as it wants.
std::vector<std::string> markPlainWords(int count, const char* const* words) {
  constexpr std::string_view kNotations("[{%\1", 4);
  std::vector<std::string> marked;
  bool allPlain = false;
  for (int i = 1; i < count; ++i) {
    const std::string word = words[i];
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
  for (std::optional<std::string>* word : {&request.key, &request.name, &request.text,
                                           &request.clsid, &request.file, &request.store}) {
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

void addKeyCommands(CLI::App& app, Invocation& asked) {
  CommandOptions list(app, asked, "list", "Sub-keys, and values with type and text", listKey);
  list.key().json();
  CommandOptions tree(app, asked, "tree", "A key and all below it", showTree);
  tree.key().json();
  CommandOptions get(app, asked, "get", "One value", getValue);
  get.key().name(true, kName).json();
  CommandOptions set(app, asked, "set", "Set a value and save", setValue);
  set.key().name(true, kName).typedValues();
  CommandOptions erase(app, asked, "delete", "Delete a value, or a key, and save", deleteEntry);
  erase.key().name(false, "The value; without it the key goes").recursive();
  CommandOptions path(app, asked, "path", "The file that holds a root", showPath);
  path.root(true);
  CommandOptions check(app, asked, "check", "What is wrong with store files", checkStores);
  check.root(false);
}

void addVariableCommands(CLI::App& app, Invocation& asked) {
  Request& request = asked.request;
  CommandOptions expand(app, asked, "expand", "A text with its %NAME% references replaced",
                        expandText);
  expand.word("TEXT", request.text, "The text").flag("--trace", request.trace, "Show each step");
  CommandOptions vars(app, asked, "vars", "The configuration variables", showVariables);
  vars.json();
}

void addComponentCommands(CLI::App& app, Invocation& asked) {
  Request& request = asked.request;
  CLI::App& group = *app.add_subcommand("component", "The classes of component libraries");
  group.require_subcommand(1);
  constexpr char kClass[] = "The class's identifier";
  CommandOptions enter(group, asked, "register", "Enter a class with its library's file and save",
                       registerClass);
  enter.word("CLASS", request.clsid, kClass)
      .word("FILE", request.file, "The file; a relative one is made absolute")
      .flag("--as-is", request.asIs, "Enter FILE as it is written");
  CommandOptions remove(group, asked, "unregister", "Delete the entry of a class and save",
                        unregisterClass);
  remove.word("CLASS", request.clsid, kClass);
  CommandOptions list(group, asked, "list", "All classes with their libraries", listClasses);
  list.json();
  CommandOptions check(group, asked, "check", "What is wrong with a class", checkClass);
  check.word("CLASS", request.clsid, kClass)
      .flag("--create", request.create, "Create an object, too; only for components")
      .timeout();
  CommandOptions probe(group, asked, "probe", "", probeClass);
  probe.word("CLASS", request.clsid, kClass).flag("--create", request.create, "").timeout().hide();
}

}  // namespace

Invocation parseArguments(int count, const char* const* words) {
  Invocation asked;
  CLI::App app(kAbout, "ltreg");
  app.allow_windows_style_options(false);
  app.set_version_flag("--version", "ltreg " LTREG_VERSION);
  app.require_subcommand(1);
  app.footer(kFooter);

  addKeyCommands(app, asked);
  addVariableCommands(app, asked);
  addComponentCommands(app, asked);

  try {
    app.parse(markPlainWords(count, words));
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

}  // namespace ltreg
