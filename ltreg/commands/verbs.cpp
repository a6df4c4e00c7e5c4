#include "ltreg/commands/verbs.h"

#include <sstream>

#include "ltreg/commands/commands.h"
#include "ltreg/component/component_check.h"
#include "ltreg/registry/value.h"

namespace ltreg {
namespace {

constexpr bool kRequired = true;
constexpr char kComponent[] = "component";

std::string faultOfType(const std::string& word) {
  return typeOfWord(word) ? std::string() : '\'' + word + "' is no type";
}

std::string faultOfEncoding(const std::string& word) {
  return word == "utf8" || word == "utf16" ? std::string() : '\'' + word + "' is no encoding";
}

std::string faultOfShell(const std::string& word) {
  return word == "bash" || word == "zsh" || word == "fish" ? std::string()
                                                           : '\'' + word + "' is no shell known";
}

std::string faultOfVersion(const std::string& word) {
  return word == "old" || word == "new" ? std::string() : '\'' + word + "' is no version";
}

// Words parted by commas.
std::string faultOfPlaces(const std::string& words) {
  std::istringstream rest(words);
  for (std::string word; std::getline(rest, word, ',');) {
    if (word != "keys" && word != "names" && word != "values") {
      return '\'' + word + "' is none of keys, names and values";
    }
  }
  return {};
}

Parameter root(bool required) {
  return {"ROOT", "A root, as HKLM", &Request::key, required};
}

// What several verbs take.
const Parameter kKey{"KEY", "Where to look", &Request::key, kRequired};
constexpr char kNameAbout[] =
    "The value; a key's default value is 'Default', in the operating system's registry ''";
const Parameter kName{"NAME", kNameAbout, &Request::name, kRequired};
const Parameter kNull{"-0,--null", "End each line with a NUL", &Request::null};
const Parameter kClass{"CLASS", "The class's identifier", &Request::clsid, kRequired};
const Parameter kLiteral{"--literal", "Take percent signs in KEY as they are", &Request::literal};
const Parameter kJson{"--json", "Write JSON", &Request::json};
const Parameter kForce{"--force",
                       "Save although lines of the store get lost; they are kept beside it",
                       &Request::force};
const Parameter kTimeout{"--timeout",
                         "Seconds until a library that hangs is given up; 10 without it",
                         &Request::timeout};

}  // namespace

std::vector<Verb> allVerbs() {
  return {
      {"list", "Sub-keys, and values with type and text", listKey, {kKey, kNull, kJson, kLiteral}},
      {"tree", "A key and all below it", showTree, {kKey, kJson, kLiteral}},
      {"get",
       "One value, or several",
       getValues,
       {kKey,
        {"NAME", kNameAbout, &Request::values, kRequired},
        {"--default", "The text to write for what is absent", &Request::fallback},
        {"--text", "Write the bytes of binary data, not hexadecimal digits", &Request::asText},
        kNull,
        kJson,
        kLiteral}},
      {"find",
       "Keys, names and values that match a pattern",
       findEntries,
       {kKey,
        {"PATTERN", "A part of the text to find", &Request::text, kRequired},
        {"--glob", "PATTERN is all of it, with * and ? for any characters", &Request::glob},
        {"--regex", "PATTERN is a regular expression", &Request::regex},
        {"--in", "Where to look: keys, names, values, or several with commas", &Request::places,
         !kRequired, faultOfPlaces},
        {"--type", "Values of this type alone", &Request::type, !kRequired, faultOfType},
        {"-i,--ignore-case", "Take the letters A to Z for a to z", &Request::ignoreCase},
        kNull,
        kJson,
        kLiteral}},
      {"set",
       "Set a value and save",
       setValue,
       {kKey,
        kName,
        {"--type",
         "The type; without it that of the present value, or else string. In store files there are"
         " string, ulong, binary and list, in the operating system's registry expand, qword, none,"
         " link and type-N as well",
         &Request::type, !kRequired, faultOfType},
        {"VALUE", "The value; for a list, any number of items", &Request::values},
        {"--text", "VALUE of binary data is the bytes, not hexadecimal digits", &Request::asText},
        kForce,
        kLiteral}},
      {"delete",
       "Delete a value, or a key, and save",
       deleteEntry,
       {kKey,
        {"NAME", "The value; without it the key goes", &Request::name},
        {"-r,--recursive", "Delete the sub-keys, too", &Request::recursive},
        kForce,
        kLiteral}},
      {"copy",
       "Copy a key and all below it, and save",
       copyKey,
       {kKey, {"NEWKEY", "The key to make", &Request::target, kRequired}, kForce, kLiteral}},
      {"rename",
       "Rename a key or a value, and save",
       renameEntry,
       {kKey,
        {"NAMES", "The key's new last component; or the value and its new name", &Request::values},
        kForce,
        kLiteral}},
      {"export",
       "A key and all below it in the text form of other tools",
       exportKey,
       {kKey,
        {"-o,--output", "The file to write, in place of standard output", &Request::outputFile},
        {"--encoding", "utf16, which is usual, or utf8", &Request::encoding, !kRequired,
         faultOfEncoding},
        kLiteral}},
      {"import",
       "Set and delete what such a text says, and save once",
       importFile,
       {{"FILE", "The file, in UTF-8 or UTF-16", &Request::file, kRequired},
        {"-n,--dry-run", "Show what would change, and change nothing", &Request::dryRun},
        {"--lossy", "Leave out what a store file cannot hold", &Request::lossy},
        kForce}},
      {"diff",
       "What two keys, stores or exported texts do not have in common",
       showDifferences,
       {{"A", "A key, a file, or old:ROOT or old:FILE for the version before", &Request::key,
         kRequired},
        {"B", "What to compare it with, likewise", &Request::target, kRequired},
        {"--patch", "Write what makes B out of A, for the import", &Request::asPatch}}},
      {"batch",
       "Many of these, one on a line, and save once or not at all",
       runBatch,
       {{"FILE", "The file with the lines; standard input without it", &Request::file}, kForce}},
      {"explain",
       "Where a key or a value comes from, and how programs read it",
       explainEntry,
       {kKey, {"NAME", kNameAbout, &Request::name}, kJson, kLiteral}},
      {"recover",
       "What saves that were cut off have left beside a store, and putting it back",
       recoverStore,
       {root(kRequired),
        {"--take", "The version that becomes the store: old or new", &Request::take, !kRequired,
         faultOfVersion}}},
      {"watch", "Changes at and below a key, as they are saved", watchKey, {kKey, kJson, kLiteral}},
      {"path", "The file that holds a root", showPath, {root(kRequired)}},
      {"check", "What is wrong with store files", checkStores, {root(!kRequired)}},

      {"expand",
       "A text with its %NAME% references replaced",
       expandText,
       {{"TEXT", "The text", &Request::text, kRequired},
        {"--trace", "Show each step", &Request::trace}}},
      {"vars", "The configuration variables", showVariables, {kJson}},

      {"manual", "The manual page, for 'man -l'", showManual, {}},

      {"completion",
       "What a shell has to read to complete command lines of the tool",
       showCompletion,
       {{"SHELL", "bash, zsh or fish", &Request::text, kRequired, faultOfShell}}},
      {"complete",
       "The words that could come next; what a shell's completion asks for",
       completeWords,
       {{"WORDS", "The words so far", &Request::values}},
       nullptr,
       true},

      verbGroup(kComponent, "The classes of component libraries"),
      {"register",
       "Enter a class with its library's file and save",
       registerClass,
       {kClass,
        {"FILE", "The file; a relative one is made absolute", &Request::file, kRequired},
        {"--as-is", "Enter FILE as it is written", &Request::asIs},
        kForce},
       kComponent},
      {"unregister",
       "Delete the entry of a class and save",
       unregisterClass,
       {kClass, kForce},
       kComponent},
      {"list", "All classes with their libraries", listClasses, {kJson}, kComponent},
      {"check",
       "What is wrong with a class",
       checkClass,
       {kClass,
        {"--create", "Create an object, too; only for components", &Request::create},
        kTimeout},
       kComponent},
      {"probe",
       "The part of the check that a process of its own carries out",
       probeClass,
       {kClass, {"--create", "", &Request::create}, kTimeout},
       kComponent,
       true},
  };
}

}  // namespace ltreg
