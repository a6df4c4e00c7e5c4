#include "ltreg/cli/manual.h"

#include <string_view>

#include "ltreg/cli/about.h"

namespace ltreg {
namespace {

bool isOption(const Parameter& parameter) {
  return parameter.name[0] == '-';
}

bool takesSeveral(const Parameter& parameter) {
  return std::holds_alternative<std::vector<std::string> Request::*>(parameter.field);
}

// What follows the name of an option, with a blank in front.
std::string argumentOf(const Parameter& parameter) {
  if (!isOption(parameter) || std::holds_alternative<bool Request::*>(parameter.field)) {
    return {};
  }
  return std::holds_alternative<int Request::*>(parameter.field) ? " SECONDS" : " WORD";
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

std::string entry(const std::string& term, const char* about) {
  return ".TP\n.B " + inTroff(term) + '\n' + inTroff(about) + ".\n";
}

std::string chapter(const Verb& verb) {
  std::string text = ".SS " + inTroff(usageOf(verb)) + '\n' + inTroff(verb.about) + ".\n";
  for (const Parameter& parameter : verb.parameters) {
    text += entry(parameter.name + argumentOf(parameter), parameter.about);
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
        parameter.name + argumentOf(parameter) + (takesSeveral(parameter) ? "..." : "");
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
  page += ".SH COMMON OPTIONS\n" + entry("--store WORD", kAboutStore) +
          entry("--backend WORD", kAboutBackend) + entry("--timeout SECONDS", kAboutWait);
  return page + section("EXIT STATUS", kAboutExits);
}

}  // namespace ltreg
