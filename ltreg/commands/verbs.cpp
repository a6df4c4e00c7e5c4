#include "ltreg/commands/verbs.h"

#include <sstream>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/component/component_check.h"
#include "ltreg/registry/value.h"

namespace ltreg {
namespace {

constexpr bool kRequired = true;
constexpr char kComponent[] = "component";
constexpr bool kTakesSlashes = true;
constexpr auto kNoFault = nullptr;

std::string faultOfType(const std::string& word) {
  return typeOfWord(word) ? std::string()
                          : '\'' + word + "' is no type" + didYouMean(word, typeWords());
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
const Parameter kHtml{"--html", "Write a page for a browser", &Request::html};
const Parameter kDryRun{"-n,--dry-run", "Show what would change, and change nothing",
                        &Request::dryRun};
const Parameter kFormat{"--format",       "The form; without it by the file",
                        &Request::format, !kRequired,
                        kNoFault,         {"store", "json", "reg"}};
const Parameter kLossy{"--lossy", "Leave out what cannot be held there", &Request::lossy};
const Parameter kSettings{"--settings", "A file in which programs describe their settings",
                          &Request::settings};
const Parameter kTimeout{"--timeout",
                         "Seconds until a library that hangs is given up; 10 without it",
                         &Request::timeout};

}  // namespace

std::vector<Verb> allVerbs() {
  return {
      {"list",
       "Sub-keys, and values with type and text",
       listKey,
       {kKey,
        {"-r,--recursive", "All below the key, too, each line with its key", &Request::recursive},
        kNull,
        kJson,
        kLiteral}},
      {"tree", "A key and all below it", showTree, {kKey, kJson, kHtml, kLiteral}},
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
        {"--in",
         "Where to look: keys, names, values, or several with commas",
         &Request::places,
         !kRequired,
         faultOfPlaces,
         {"keys", "names", "values"}},
        {"--type", "Values of this type alone", &Request::type, !kRequired, faultOfType,
         typeWords()},
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
         &Request::type, !kRequired, faultOfType, typeWords()},
        {"VALUE", "The value; for a list, any number of items", &Request::values},
        {"--text", "VALUE of binary data is the bytes, not hexadecimal digits", &Request::asText},
        kForce,
        kDryRun,
        kLiteral}},
      {"delete",
       "Delete a value, or a key, and save",
       deleteEntry,
       {kKey,
        {"NAME", "The value; without it the key goes", &Request::name},
        {"-r,--recursive", "Delete the sub-keys, too", &Request::recursive},
        kForce,
        kDryRun,
        kLiteral}},
      {"query",
       "What list or get shows, in the words of the system's tool",
       queryKey,
       {kKey,
        {"NAME", kNameAbout, &Request::name},
        {"-v,--value", "The value, as NAME; also /v NAME, and /ve for the default value",
         &Request::valueName},
        {"-s,--recursive", "All below the key, too; also /s", &Request::recursive},
        kJson,
        kLiteral},
       nullptr,
       false,
       kTakesSlashes},
      {"add",
       "Set a value and save, in the words of the system's tool",
       addValue,
       {kKey,
        {"NAME", kNameAbout, &Request::name},
        {"VALUE", "The value; for a list, any number of items", &Request::values},
        {"-v,--value", "The value, as NAME; also /v NAME, and /ve for the default value",
         &Request::valueName},
        {"-t,--type", "The type, as that of set or as REG_DWORD; also /t TYPE", &Request::type,
         !kRequired, kNoFault, typeWordsOfAdd()},
        {"-d,--data", "The text, as VALUE; also /d TEXT", &Request::data},
        {"-f,--force", "As that of set; also /f", &Request::force},
        kDryRun,
        kLiteral},
       nullptr,
       false,
       kTakesSlashes},
      {"copy",
       "Copy a key and all below it, and save",
       copyKey,
       {kKey,
        {"NEWKEY", "The key to make", &Request::target, kRequired},
        kForce,
        kDryRun,
        kLiteral}},
      {"rename",
       "Rename a key or a value, and save",
       renameEntry,
       {kKey,
        {"NAMES", "The key's new last component; or the value and its new name", &Request::values},
        kForce,
        kDryRun,
        kLiteral}},
      {"export",
       "A key and all below it, as a .reg text, JSON or the text of a store file",
       exportKey,
       {kKey,
        {"-o,--output", "The file to write, in place of standard output", &Request::outputFile},
        kFormat,
        {"--encoding",
         "Of a .reg text: utf16, which is usual, or utf8",
         &Request::encoding,
         !kRequired,
         kNoFault,
         {"utf8", "utf16"}},
        kLossy,
        kLiteral}},
      {"import",
       "Set and delete what such a text says, and save once",
       importFile,
       {{"FILE", "The file", &Request::file, kRequired},
        {"KEY", "The root or key to take out of it; a root is needed for the text of a store file",
         &Request::key},
        kFormat,
        kDryRun,
        kLossy,
        kForce,
        kLiteral}},
      {"diff",
       "What two keys, stores or exported texts do not have in common",
       showDifferences,
       {{"A",
         "A key, a file, old:ROOT or old:FILE for the version before, os:KEY or file:KEY for a "
         "backend",
         &Request::key, kRequired},
        {"B", "What to compare it with, likewise", &Request::target, kRequired},
        {"--patch", "Write what makes B out of A, for the import", &Request::asPatch},
        kJson,
        kHtml}},
      {"merge",
       "Bring what two sides have changed together",
       mergeFiles,
       {{"BASE", "The file that both come from", &Request::file, kRequired},
        {"OURS", "The one side, which the result replaces", &Request::key, kRequired},
        {"THEIRS", "The other side", &Request::target, kRequired},
        {"-o,--output", "The file to write, in place of OURS", &Request::outputFile},
        kDryRun,
        {"--force", "Let go of comments, which no store keeps that is saved", &Request::force}}},
      {"batch",
       "Many of these, one on a line, and save once or not at all",
       runBatch,
       {{"FILE", "The file with the lines; standard input without it", &Request::file}, kForce}},
      {"explain",
       "Where a key or a value comes from, and how programs read it",
       explainEntry,
       {kKey, {"NAME", kNameAbout, &Request::name}, kSettings, kJson, kLiteral}},
      {"recover",
       "What saves that were cut off have left beside a store, and putting it back",
       recoverStore,
       {root(kRequired),
        {"--take",
         "The version that becomes the store: old or new",
         &Request::take,
         !kRequired,
         kNoFault,
         {"old", "new"}}}},
      {"watch", "Changes at and below a key, as they are saved", watchKey, {kKey, kJson, kLiteral}},
      {"path", "The file that holds a root", showPath, {root(kRequired), kJson}},
      {"check",
       "What is wrong with store files, and with settings that programs describe",
       checkStores,
       {root(!kRequired), kSettings, kJson}},

      {"expand",
       "A text with its %NAME% references replaced",
       expandText,
       {{"TEXT", "The text", &Request::text, kRequired},
        {"--trace", "Show each step", &Request::trace},
        kJson}},
      {"vars", "The configuration variables", showVariables, {kJson}},

      {"manual", "The manual page, for 'man -l'", showManual, {}},

      {"completion",
       "What a shell has to read to complete command lines of the tool",
       showCompletion,
       {{"SHELL",
         "bash, zsh or fish",
         &Request::text,
         kRequired,
         kNoFault,
         {"bash", "zsh", "fish"}}}},
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
       {{"CLASS", "The class's identifier", &Request::clsid},
        {"FILE", "The file; a relative one is made absolute", &Request::file},
        {"--all", "Enter every class of this library, as its files tell them", &Request::library},
        {"--as-is", "Enter the file as it is written", &Request::asIs},
        kForce},
       kComponent},
      {"unregister",
       "Delete the entry of a class and save",
       unregisterClass,
       {{"CLASS", "The class's identifier", &Request::clsid},
        {"--missing", "The entries of all libraries that are no longer there", &Request::missing},
        kForce},
       kComponent},
      {"offers",
       "The classes of a library with their interfaces and what they are for, without loading it",
       showOffers,
       {{"LIBRARY", "The library's file", &Request::library, kRequired}, kJson},
       kComponent},
      {"list",
       "All classes with their libraries, and what is wrong with an entry",
       listClasses,
       {{"--load",
         "Load each library in a process of its own, and tell plain classes from components",
         &Request::load},
        kTimeout,
        kJson},
       kComponent},
      {"check",
       "What is wrong with a class",
       checkClass,
       {kClass,
        {"--create", "Create an object, too; only for components", &Request::create},
        kTimeout,
        kJson},
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
