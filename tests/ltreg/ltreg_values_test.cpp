// What the tool shows of values, sets and deletes, and what it refuses.
#include <random>

#include "ltlib/ltlib.h"
#include "tests/ltreg/ltreg_fixture.h"
#include "tests/support/system.h"

namespace {

using LTLib::Testing::LtregCase;
using LTLib::Testing::ProgramResult;
using LTLib::Testing::Words;

constexpr char kDemo[] = R"([Software\Demo]
"Title"=string:"Hello, "world"	x"
"Dir"=dir:"C:\x\"
"Retries"=ulong:4294967295
"Blob"=binary:00	A0
"Paths"=liststring:"one","two 2"

[Software\Demo\Sub]
"n"=ulong:2

)";
constexpr char kOne[] = "[A\\B]\n\"n\"=ulong:1\n\n";

// The store with one value in place of kOne's.
std::string holding(const std::string& line) {
  return "[A\\B]\n" + line + "\n\n";
}

class LtregValues : public LTLib::Testing::LtregTest {
 protected:
  void check(std::initializer_list<LtregCase> rows) const {
    for (const LtregCase& row : rows) {
      LtregTest::check(row);
    }
  }
};

TEST_F(LtregValues, ShowsValuesOfEachType) {
  check({
      {{"list", "hklm\\software\\DEMO\\"},
       0,
       "key\tSub\nstring\tTitle\tHello, \"world\"\\x09x\nstring\tDir\tC:\\x\\\nulong\tRetries\t"
       "4294967295\nbinary\tBlob\t00\\x09A0\nlist\tPaths\tone\ttwo 2\n",
       "",
       kDemo},
      {{"tree", "HKEY_LOCAL_MACHINE\\Software\\Demo\\Sub"},
       0,
       "HKEY_LOCAL_MACHINE\\Software\\Demo\\Sub\n\tulong\tn\t2\n",
       "",
       kDemo},
      {{"get", "HKLM\\Software\\Demo", "title"}, 0, "Hello, \"world\"\tx\n", "", kDemo},
      {{"get", "HKLM\\Software\\Demo", "Dir"}, 0, "C:\\x\\\n", "", kDemo},
      {{"get", "HKLM\\Software\\Demo", "Retries"}, 0, "4294967295\n", "", kDemo},
      {{"get", "HKLM\\Software\\Demo", "Blob"}, 0, "00\\x09A0\n", "", kDemo},
      {{"get", "HKLM\\Software\\Demo", "Paths"}, 0, "one\ntwo 2\n", "", kDemo},
      {{"get", "HKLM\\A\\B", "n"}, 0, "\n", "", holding("\"n\"=string:\"\"")},
      {{"get", "HKLM\\A\\B", "n"}, 0, "", "", holding("\"n\"=liststring:\"\"")},
  });
}

TEST_F(LtregValues, WritesJson) {
  check({
      {{"get", "--json", "HKLM\\A\\B", "n"},
       0,
       "{\n  \"name\": \"n\",\n  \"type\": \"string\",\n  \"value\": \"a\\\"\xEF\xBF\xBD\"\n}\n",
       "",
       holding("\"n\"=string:\"a\"\xFF\"")},
      {{"list", "HKLM\\A\\B", "--json"},
       0,
       "{\n  \"key\": \"HKEY_LOCAL_MACHINE\\\\A\\\\B\",\n  \"keys\": [],\n  \"values\": [\n    {\n"
       "      \"name\": \"n\",\n      \"type\": \"ulong\",\n      \"value\": 4294967295\n    }\n"
       "  ]\n}\n",
       "",
       holding("\"n\"=ulong:-1")},
      {{"tree", "HKLM\\A", "--json"},
       0,
       "[\n  {\n    \"key\": \"HKEY_LOCAL_MACHINE\\\\A\",\n    \"values\": []\n  },\n  {\n"
       "    \"key\": \"HKEY_LOCAL_MACHINE\\\\A\\\\B\",\n    \"values\": [\n      {\n"
       "        \"name\": \"l\",\n        \"type\": \"list\",\n        \"value\": [\n"
       "          \"a\",\n          \"b\"\n        ]\n      }\n    ]\n  }\n]\n",
       "",
       holding("\"l\"=liststring:\"a\",\"b\"")},
  });
}

TEST_F(LtregValues, ShowsWhatTheBackendCannotEnumerate) {
  const std::string text = "[B\\C\\D]\n\"n\"=ulong:1\n\n[A\\E]\n\"n\"=ulong:1\n\n";
  check({
      {{"list", "HKLM"}, 0, "key\tB\nkey\tA\n", "", text},
      {{"list", "HKLM\\b"}, 0, "key\tC\n", "", text},
      {{"tree", "HKLM\\"},
       0,
       "HKEY_LOCAL_MACHINE\nHKEY_LOCAL_MACHINE\\B\nHKEY_LOCAL_MACHINE\\B\\C\n"
       "HKEY_LOCAL_MACHINE\\B\\C\\D\n\tulong\tn\t1\nHKEY_LOCAL_MACHINE\\A\n"
       "HKEY_LOCAL_MACHINE\\A\\E\n\tulong\tn\t1\n",
       "",
       text},
      {{"list", "HKLM\\C"}, 1, "", "'HKEY_LOCAL_MACHINE\\C' does not exist", text},
      {{"tree", "HKLM\\B\\D"}, 1, "", "'HKEY_LOCAL_MACHINE\\B\\D' does not exist", text},
      {{"get", "HKLM\\B\\C", "n"}, 1, "", "the value 'n' of 'HKEY_LOCAL_MACHINE\\B\\C'", text},
      {{"get", "HKLM\\B\\X\\Y", "n"}, 1, "", "the key 'HKEY_LOCAL_MACHINE\\B\\X\\Y'", text},
      {{"list", "HKLM"}, 1, "", "there is no store file 'HKEY_LOCAL_MACHINE.cfg'", {}},
  });
}

TEST_F(LtregValues, SetsAndSaves) {
  const auto set = [](Words words) {
    words.insert(words.begin(), {"set", "HKLM\\A\\B", "n"});
    return words;
  };
  const std::string present = holding("\"N\"=ulong:1");
  check({
      {set({"x"}), 0, "", "", {}, holding("\"n\"=string:\"x\"")},
      {set({"", "--type", "string"}), 0, "", "", {}, holding("\"n\"=string:\"\"")},
      {set({"[a,\"\\]"}), 0, "", "", {}, holding("\"n\"=string:\"[a,\"\\]\"")},
      {set({"%%"}), 0, "", "", {}, holding("\"n\"=string:\"%%\"")},
      {set({"--", "--json"}), 0, "", "", {}, holding("\"n\"=string:\"--json\"")},
      {set({"get"}), 0, "", "", {}, holding("\"n\"=string:\"get\"")},
      {set({"--type=binary", "a\"\\ b"}), 0, "", "", {}, holding("\"n\"=binary:a\"\\ b")},
      {set({"--type", "list"}), 0, "", "", {}, holding("\"n\"=liststring:\"\"")},
      {set({"--type", "list", "[a", "{}", "]"}),
       0,
       "",
       "",
       {},
       holding("\"n\"=liststring:\"[a\",\\\n\"{}\",\\\n\"]\"")},
      {set({"0xfFfFfFfF"}), 0, "", "", present, holding("\"N\"=ulong:-1")},
      {set({"-2147483648"}), 0, "", "", present, holding("\"N\"=ulong:-2147483648")},
      {set({"--type", "ulong", "4294967295"}), 0, "", "", present, holding("\"N\"=ulong:-1")},
      {set({"c:\\y\\"}), 0, "", "", holding("\"n\"=dir:\"c:\\x\""),
       holding("\"n\"=dir:\"c:\\y\\\"")},
  });
}

TEST_F(LtregValues, RefusesWhatHasNoForm) {
  struct Case {
    const char* key;
    const char* name;
    const char* type;
    const char* value;
    const char* errors;
  };
  const Case cases[] = {
      {"HKLM", "n", "string", "x", "a root holds no values"},
      {"HKLM\\A", "n", "string", "x", "right below its root"},
      {"HKLM\\[A]", "n", "string", "x", "right below its root"},
      {"HKLM\\A\\B]", "n", "string", "x", "cannot hold ']'"},
      {"HKLM\\A\nB\\C", "n", "string", "x", "a key cannot hold a line feed"},
      {"HKLM\\A\\\\B", "n", "string", "x", "an empty component"},
      {"HKLM\\\\A\\B", "n", "string", "x", "an empty component"},
      {"HKXX\\A\\B", "n", "string", "x", "'HKXX' is no root"},
      {"HKLM/A/B", "n", "string", "x", "'HKLM/A/B' is no root"},
      {"", "n", "string", "x", "'' is no root"},
      {"\\\\\\", "n", "string", "x", "'' is no root"},
      {"HKLM\\A\\B", "", "string", "x", "name cannot be empty"},
      {"HKLM\\A\\B", "a\"b", "string", "x", "the name 'a\"b' holds a double quote"},
      {"HKLM\\A\\B", "a\nb", "string", "x", "the name 'a\\x0ab'"},
      {"HKLM\\A\\B", "s", "string", "a\nb", "holds a line feed"},
      {"HKLM\\A\\B", "s", "binary", "a\nb", "holds a line feed"},
      {"HKLM\\A\\B", "s", "binary", "a\\", "cannot end in a backslash"},
      {"HKLM\\A\\B", "s", "list", "a,b", "the list item 'a,b'"},
      {"HKLM\\A\\B", "s", "list", "a\\b", "the list item 'a\\b'"},
      {"HKLM\\A\\B", "s", "list", "a\"b", "the list item 'a\"b'"},
      {"HKLM\\A\\B", "s", "list", "", "empty item"},
      {"HKLM\\A\\B", "n", "string", "x", "'n' is a ulong and would stay one; delete it first"},
      {"HKLM\\A\\B", "u", "ulong", "4294967296", "'4294967296' is no ulong"},
      {"HKLM\\A\\B", "u", "ulong", "-2147483649", "is no ulong"},
      {"HKLM\\A\\B", "u", "ulong", "1x", "is no ulong"},
      {"HKLM\\A\\B", "u", "ulong", "0x", "is no ulong"},
      {"HKLM\\A\\B", "u", "ulong", " 1", "is no ulong"},
      {"HKLM\\A\\B", "u", "ulong", "", "is no ulong"},
  };
  for (const Case& row : cases) {
    check({{{"set", row.key, row.name, "--type", row.type, "--", row.value},
            3,
            "",
            row.errors,
            kOne}});
  }
}

TEST_F(LtregValues, Deletes) {
  const std::string two = "[A\\B]\n\"n\"=ulong:1\n\"N\"=ulong:2\n\"m\"=ulong:3\n\n";
  const std::string deep = std::string(kOne) + "[A\\B\\C\\D]\n\"n\"=ulong:1\n\n";
  const std::string other = "[a\\X]\n\"n\"=ulong:1\n\n";
  check({
      {{"delete", "HKLM\\A\\B", "n"}, 0, "", "", two, holding("\"m\"=ulong:3")},
      {{"delete", "HKLM\\A\\B", "n"}, 0, "", "", kOne, ""},
      {{"delete", "HKLM\\A\\B", "x"}, 1, "", "'x'", kOne},
      {{"delete", "HKLM\\A\\X", "n"}, 1, "", "'n'", kOne},
      {{"delete", "HKLM\\A\\B"}, 0, "", "", kOne, ""},
      {{"delete", "HKLM\\A\\X"}, 1, "", "'HKEY_LOCAL_MACHINE\\A\\X' does not exist", kOne},
      {{"delete", "HKLM\\A\\B"}, 3, "", "has sub-keys; --recursive", deep},
      {{"delete", "HKLM\\a\\b", "--recursive"}, 0, "", "", other + deep, other},
      {{"delete", "HKLM\\A"}, 3, "", "has sub-keys; --recursive", deep},
      {{"delete", "HKLM\\A", "-r"},
       0,
       "",
       "",
       deep + "[B\\C]\n\"n\"=ulong:1\n",
       "[B\\C]\n\"n\"=ulong:1\n\n"},
      {{"delete", "HKLM\\"}, 3, "", "a root cannot be deleted", kOne},
      {{"delete", "HKLM\\A\\B", "n", "-r"}, 2, "", "--recursive deletes keys", kOne},
  });
}

TEST_F(LtregValues, TellsWrongUsage) {
  check({
      {{}, 2, "", "ltreg --help", kOne},
      {{"frobnicate"}, 2, "", "'frobnicate' is no command", kOne},
      {{"list"}, 2, "", "KEY is required", kOne},
      {{"list", "HKLM", "\x1B[2J"}, 2, "", "\\x1b[2J", kOne},
      {{"get", "HKLM\\A\\B"}, 2, "", "NAME is required (see 'ltreg get --help')", kOne},
      {{"set", "HKLM\\A\\B", "s"}, 2, "", "takes one VALUE, not 0", kOne},
      {{"set", "HKLM\\A\\B", "s", "a", "b"}, 2, "", "takes one VALUE, not 2", kOne},
      {{"set", "HKLM\\A\\B", "s", "--type", "dword", "1"}, 2, "", "dword", kOne},
      {{"set", "HKLM\\A\\B", "s", "-x"}, 2, "", "go behind '--'", kOne},
      {{"list", "HKLM", "--store"}, 2, "", "--store", kOne},
      {{"path", "HKLM\\A"}, 3, "", "'HKLM\\A' is no root", kOne},
  });
}

TEST_F(LtregValues, TellsAboutItself) {
  EXPECT_EQ(run({"--version"}).output.substr(0, 6), "ltreg ");
  for (const char* command :
       {"list", "tree", "get", "set", "delete", "path", "check", "expand", "vars"}) {
    EXPECT_NE(run({"--help"}).output.find(command), std::string::npos);
    const ProgramResult help = run({command, "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.output.find("--store"), std::string::npos) << command;
    EXPECT_EQ(help.errors, "");
  }
}

TEST_F(LtregValues, TakesVeryLongArguments) {
  // Windows has 32767 bytes for a whole command line.
  const std::string text(LTLib::Testing::kOnWindows ? 10000 : 100000, 'x');
  check({
      {{"set", "HKLM\\A\\B", text, text},
       0,
       "",
       "",
       {},
       holding("\"" + text + "\"=string:\"" + text + "\"")},
      {{"get", "HKLM\\A\\B", text}, 0, text + "\n", "", holding("\"" + text + "\"=binary:" + text)},
      {{"list", "HKLM\\A\\B"},
       0,
       "string\t" + text + "\ta\n",
       "",
       holding("\"" + text + "\"=string:\"a\"")},
      {{"list", "HKLM\\" + text + "\\B"}, 1, "", "...' does not exist", kOne},
      {{text}, 2, "", "xxx...' is no command", kOne},
  });
}

std::string randomWord(std::mt19937& random) {
  constexpr const char* kWords[] = {
      "list",    "tree",    "get",       "set",         "delete",   "path",
      "check",   "--json",  "--store",   "s.cfg",       "--type",   "string",
      "ulong",   "binary",  "list",      "--recursive", "-r",       "--",
      "--help",  "-h",      "--version", "HKLM",        "HKCU",     "HKLM\\A\\B",
      "HKLM\\A", "HKLM\\",  "\\",        "\\\\\\\\",    "n",        "",
      "%PATH%",  "%s%n",    "[a,b]",     "{}",          "%%",       "++",
      "-",       "=",       "--=",       "--store=",    "1",        "-1",
      "0x10",    "expand",  "vars",      "component",   "register", "unregister",
      "probe",   "--trace", "--create",  "--as-is",     "X",        "HKLM\\%QSRoot%"};
  if (random() % 6 != 0) {
    return kWords[random() % std::size(kWords)];
  }
  std::string garbage;
  for (auto left = random() % 40; left > 0; --left) {
    const auto byte = static_cast<char>(1 + random() % 255);
    garbage += byte == '/' ? '_' : byte;  // no path may lead out of the folder
  }
  return garbage;
}

TEST_F(LtregValues, SurvivesRandomArguments) {
  std::mt19937 random(20261123);
  m_folder.write(kStore, kDemo);
  const int rounds = LTLib::Testing::kOnWindows ? 50 : 500;
  for (int i = 0; i < rounds; ++i) {
    Words words;
    std::string shown;
    for (auto left = random() % 8; left > 0; --left) {
      words.push_back(randomWord(random));
      shown += "'" + words.back() + "' ";
    }
    SCOPED_TRACE("round " + std::to_string(i) + ": " + shown);
    const ProgramResult result = run(words);
    ASSERT_GE(result.exitCode, 0);
    ASSERT_LE(result.exitCode, 4) << result.errors;
    // What a check finds is its output; every other failure tells its reason as an error.
    ASSERT_TRUE(result.exitCode == 0 || !(result.errors + result.output).empty());
  }
  EXPECT_EQ(run({"check"}).exitCode, 0);
}

}  // namespace
