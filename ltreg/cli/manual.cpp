#include "ltreg/cli/manual.h"

#include <algorithm>
#include <string_view>

#include "ltreg/cli/about.h"

namespace ltreg {
namespace {

// What follows the name of an option, with a blank in front.
std::string argumentOf(const Parameter& parameter) {
  if (!parameter.isOption() || !parameter.takesWord()) {
    return {};
  }
  if (parameter.choices.empty()) {
    return std::holds_alternative<int Request::*>(parameter.field) ? " SECONDS" : " WORD";
  }
  std::string words;
  for (const std::string& choice : parameter.choices) {
    words += (words.empty() ? ' ' : '|') + choice;
  }
  return words;
}

// A text as the formatter takes it: it reads a backslash as a command of its own, and so a dot or a
// quote that begins a line; a hyphen of its own is not the one that a terminal copies.
std::string inTroff(std::string_view text) {
  std::string result;
  bool atStart = true;
  for (const char byte : text) {
    if (atStart && (byte == '.' || byte == '\'')) {
      result += "\\&";
    }
    result += byte == '\\' ? "\\e" : byte == '-' ? "\\-" : std::string(1, byte);
    atStart = byte == '\n';
  }
  return result;
}

std::string section(const char* name, std::string_view text) {
  return std::string(".SH ") + name + '\n' + inTroff(text) + '\n';
}

std::string entry(std::string_view term, std::string_view about) {
  return ".TP\n.B " + inTroff(term) + '\n' + inTroff(about) + ".\n";
}

std::string entry(const Parameter& parameter) {
  return entry(parameter.name + argumentOf(parameter), parameter.about);
}

// A section of lines with a term, a tab and what is said of it.
std::string entries(const char* name, std::string_view lines) {
  std::string text = std::string(".SH ") + name + '\n';
  while (!lines.empty()) {
    const std::string_view line = lines.substr(0, lines.find('\n'));
    const std::size_t tab = line.find('\t');
    text += entry(line.substr(0, tab), line.substr(tab + 1));
    lines.remove_prefix(std::min(lines.size(), line.size() + 1));
  }
  return text;
}

std::string chapter(const Verb& verb) {
  std::string text = ".SS " + inTroff(usageOf(verb)) + '\n' + inTroff(verb.about) + ".\n";
  for (const Parameter& parameter : verb.parameters) {
    text += entry(parameter);
  }
  return text;
}

}  // namespace

std::string wordsOf(const Verb& verb) {
  return verb.group != nullptr ? std::string(verb.group) + ' ' + verb.name : verb.name;
}

std::string usageOf(const Verb& verb) {
  std::string usage = wordsOf(verb);
  for (const Parameter& parameter : verb.parameters) {
    const std::string word =
        parameter.name + argumentOf(parameter) + (parameter.takesSeveral() ? "..." : "");
    usage += parameter.required ? ' ' + word : " [" + word + ']';
  }
  return usage;
}

std::string manualPage(const std::vector<Verb>& verbs) {
  std::string page =
      ".TH LTREG 1\n" + section("NAME", "ltreg - looks into a registry and changes it") +
      section("SYNOPSIS", "ltreg COMMAND WORD...") + section("DESCRIPTION", kAboutKeys);
  page += ".SH COMMANDS\n";
  for (const Verb& verb : verbs) {
    if (verb.command != nullptr && !verb.hidden) {
      page += chapter(verb);
    }
  }
  page += ".SH COMMON OPTIONS\n";
  for (const Parameter& option : commonOptions()) {
    page += entry(option);
  }
  return page + section("EXIT STATUS", kAboutExits) + entries("ENVIRONMENT", kAboutEnvironment) +
         entries("FILES", kAboutFiles);
}

}  // namespace ltreg
