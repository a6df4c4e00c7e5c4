// What the tool shows of values, sets and deletes, and what it refuses.
#include <span>

#include "tests/ltreg/ltreg_fixture.h"
#include "tests/support/system.h"

namespace {

using namespace LTLib::Testing;

constexpr char kDemo[] =
    "[Software\\Demo]\n\"Title\"=string:\"Hello, \"world\"\tx\"\n\"Dir\"=dir:\"C:\\x\\\"\n"
    "\"Retries\"=ulong:4294967295\n\"Blob\"=binary:00\tA0\n"
    "\"Paths\"=liststring:\"one\",\"two 2\"\n\n[Software\\Demo\\Sub]\n\"n\"=ulong:2\n\n";

class LtregValues : public LtregTest {
 protected:
  // Sets the value "n".
  void sets(const std::string& words, const std::string& after, const std::string& before) const {
    changes("set @ n " + words, holding(before), holding(after));
  }
};

TEST_F(LtregValues, ShowsValuesOfEachType) {
  shows("tree HKLM\\software\\DEMO\\",
        "HKEY_LOCAL_MACHINE\\software\\DEMO\n\tstring\tTitle\tHello, \"world\"\\x09x\n"
        "\tstring\tDir\tC:\\x\\\n\tulong\tRetries\t4294967295\n\tbinary\tBlob\t3030094130\n"
        "\tlist\tPaths\tone\ttwo 2\nHKEY_LOCAL_MACHINE\\software\\DEMO\\Sub\n\tulong\tn\t2\n",
        kDemo);
  shows("get hkey_local_machine\\Software\\Demo title", "Hello, \"world\"\tx\n", kDemo);
  shows("get HKLM\\Software\\Demo Blob --text", "00\\x09A0\n", kDemo);
  shows("get HKLM\\Software\\Demo Paths", "one\ntwo 2\n", kDemo);
  shows("get @ n", "\n", holding("\"n\"=string:\"\""));
  shows("get @ n", "", holding("\"n\"=liststring:\"\""));
}

TEST_F(LtregValues, WritesJson) {
  shows("get --json @ n",
        "{\"version\": 1,\"values\": "
        "[{\"name\": \"n\",\"type\": \"string\",\"value\": \"a\\\"\xEF\xBF\xBD\"}]}",
        holding("\"n\"=string:\"a\"\xFF\""));
  shows("list @ --json",
        R"({"version": 1,"key": "HKEY_LOCAL_MACHINE\\A\\B","keys": [],"values": )"
        R"([{"name": "n","type": "ulong","value": 4294967295}]})",
        holding("\"n\"=ulong:-1"));
  for (const char* line : {"tree @ --json", "list -r @ --json"}) {
    shows(line,
          R"({"version": 1,"keys": [{"key": "HKEY_LOCAL_MACHINE\\A\\B","values": )"
          R"([{"name": "l","type": "list","value": ["a","b"]}]}]})",
          holding("\"l\"=liststring:\"a\",\"b\""));
  }
}

TEST_F(LtregValues, ShowsWhatTheBackendCannotEnumerate) {
  const std::string text = "[B\\C\\D]\n\"n\"=ulong:1\n\n[A\\E]\n\"n\"=ulong:1\n\n";
  shows("list HKLM\\b", "key\tC\n", text);
  shows("tree HKLM\\",
        "HKEY_LOCAL_MACHINE\nHKEY_LOCAL_MACHINE\\B\nHKEY_LOCAL_MACHINE\\B\\C\n"
        "HKEY_LOCAL_MACHINE\\B\\C\\D\n\tulong\tn\t1\nHKEY_LOCAL_MACHINE\\A\n"
        "HKEY_LOCAL_MACHINE\\A\\E\n\tulong\tn\t1\n",
        text);
  fails(1, "list HKLM\\C", "'HKEY_LOCAL_MACHINE\\C' does not exist", text);
  fails(1, "tree HKLM\\B\\D", "'HKEY_LOCAL_MACHINE\\B\\D' does not exist", text);
  fails(1, "get HKLM\\B\\C n", "the value 'n' of 'HKEY_LOCAL_MACHINE\\B\\C'", text);
  fails(1, "list HKLM", "there is no store file 'HKEY_LOCAL_MACHINE.cfg'", {});
}

TEST_F(LtregValues, SetsAndSaves) {
  changes("set @ n x", {}, holding("\"n\"=string:\"x\""));
  changes("set @ n 5b612c225cFF5d --type binary", {}, holding("\"n\"=binary:[a,\"\\\xFF]"));
  changes("set @ n [a,\"\\] --type=binary --text", {}, holding("\"n\"=binary:[a,\"\\]"));
  changes("set @ n --type list", {}, holding("\"n\"=liststring:\"\""));
  changes("set @ n --type list [a {}", {}, holding("\"n\"=liststring:\"[a\",\\\n\"{}\""));
  sets("''", "\"n\"=string:\"\"", "\"n\"=string:\"x\"");
  sets("%%", "\"n\"=string:\"%%\"", "\"n\"=string:\"x\"");
  sets("-- --json", "\"n\"=string:\"--json\"", "\"n\"=string:\"x\"");
  sets("get", "\"n\"=string:\"get\"", "\"n\"=string:\"x\"");
  sets("c:\\y\\", "\"n\"=dir:\"c:\\y\\\"", "\"n\"=dir:\"c:\\x\"");
  sets("0xfFfFfFfF", "\"N\"=ulong:-1", "\"N\"=ulong:1");
  sets("-2147483648", "\"N\"=ulong:-2147483648", "\"N\"=ulong:1");
  sets("--type ulong 4294967295", "\"N\"=ulong:-1", "\"N\"=ulong:1");
}

TEST_F(LtregValues, RefusesWhatHasNoForm) {
  fails(3, "set HKLM n x", "a root holds no values", kOne);
  fails(3, "set HKLM\\[A] n x", "right below its root", kOne);
  fails(3, "set @] n x", "cannot hold ']'", kOne);
  fails(3, "set 'HKLM\\A\nB\\C' n x", "a key cannot hold a line feed", kOne);
  fails(3, "set HKLM\\A\\\\B n x", "an empty component", kOne);
  fails(3, "set HKLM\\\\A\\B n x", "an empty component", kOne);
  fails(3, "path HKLM\\A", "'HKLM\\A' is no root", kOne);
  fails(3, "set @ '' x", "name cannot be empty", kOne);
  fails(3, "set @ a\"b x", "the name 'a\"b' holds a double quote", kOne);
  fails(3, "set @ 'a\nb' x", "the name 'a\\x0ab'", kOne);
  fails(3, "set @ s 'a\nb'", "holds a line feed", kOne);
  fails(3, "set @ s --type binary 4100", "holds a NUL", kOne);
  fails(3, "set @ s --type binary 4g", "hexadecimal", kOne);
  fails(3, "set @ s --type binary --text a\\", "cannot end in a backslash", kOne);
  fails(3, "set @ s --type list a,b", "the list item 'a,b'", kOne);
  fails(3, "set @ s --type list a\\b", "the list item 'a\\b'", kOne);
  fails(3, "set @ s --type list a\"b", "the list item 'a\"b'", kOne);
  fails(3, "set @ s --type list ''", "empty item", kOne);
  fails(3, "set @ n --type string x", "'n' is a ulong and would stay one", kOne);
  fails(3, "set @ s --type type-2 x", "no values of the type 'type-2'", kOne);
  for (const std::string word : {"4294967296", "-2147483649", "1x", "0x", "' 1'", "''"}) {
    fails(3, "set @ u --type ulong -- " + word, "is no ulong", kOne);
  }
}

TEST_F(LtregValues, Deletes) {
  const std::string deep = std::string(kOne) + "[A\\B\\C\\D]\n\"n\"=ulong:1\n\n";
  const std::string other = "[a\\X]\n\"n\"=ulong:1\n\n";
  changes("delete @ n", holding("\"n\"=ulong:1\n\"N\"=ulong:2\n\"m\"=ulong:3"),
          holding("\"m\"=ulong:3"));
  changes("delete @ n", kOne, "");
  changes("delete @", kOne, "");
  changes("delete HKLM\\a\\b --recursive", other + deep, other);
  changes("delete HKLM\\A -r", deep + "[B\\C]\n\"n\"=ulong:1\n", "[B\\C]\n\"n\"=ulong:1\n\n");
  fails(1, "delete @ x", "'x'", kOne);
  fails(1, "delete HKLM\\A\\X", "'HKEY_LOCAL_MACHINE\\A\\X' does not exist", kOne);
  fails(3, "delete @", "has sub-keys; --recursive", deep);
  fails(3, "delete HKLM\\", "a root cannot be deleted", kOne);
  fails(2, "delete @ n -r", "--recursive deletes keys", kOne);
}

TEST_F(LtregValues, Finds) {
  const std::string text = "[A\\B]\n\"n\"=ulong:17\n\"T\"=string:\"Hello, b\"\n\n";
  const std::string number = "ulong\tHKEY_LOCAL_MACHINE\\A\\B\tn\t17\n";
  const std::string title = "string\tHKEY_LOCAL_MACHINE\\A\\B\tT\tHello, b\n";
  const std::string key = "key\tHKEY_LOCAL_MACHINE\\A\\B\n";
  shows("find HKLM b -i", key + title, text);
  shows("find @ 7", number, text);
  shows("find HKLM b --in keys,values", title, text);
  shows("find HKLM h*B --glob -i", title, text);
  shows("find HKLM ? --glob --in names", number + title, text);
  shows("find HKLM ^1.$ --regex --type ulong", number, text);
  shows("find HKLM B --json", R"({"version": 1,"found": [{"key": "HKEY_LOCAL_MACHINE\\A\\B"}]})",
        text);
  EXPECT_EQ(run("find HKLM x").exitCode, 1);
  EXPECT_EQ(run("find HKLM h*b* --glob").exitCode, 1);
  fails(3, "find HKLM ( --regex", "is no regular expression", text);
  fails(2, "find HKLM x --in file", "'file' is none of", text);
  fails(2, "find HKLM x --glob --regex", "exclude one another", text);
  fails(0, "find HKLM x+$ --regex", "too long for --regex",
        holding("\"n\"=string:\"" + std::string(10001, 'x') + "\"\n\"s\"=string:\"x\""),
        "string\tHKEY_LOCAL_MACHINE\\A\\B\ts\tx\n");
}

TEST_F(LtregValues, GetsSeveralValuesAndDefaults) {
  const std::string text = holding("\"n\"=ulong:1\n\"l\"=liststring:\"a\",\"b\"");
  shows("get @ l N", "a\nb\n1\n", text);
  shows("get @ -0 l n",
        std::string("a\0b\0"
                    "1\0",
                    6),
        text);
  shows("list @ -0", std::string("ulong\tn\t1\0", 10), kOne);
  shows("get @ n x --default [?", "1\n[?\n", text);
  shows("get HKLM\\A\\X x --default ''", "\n", text);
  shows("get @ x --default y", "y\n", {});
  shows("get @ n x --default y --json",
        R"({"version": 1,"values": [{"name": "n","type": "ulong","value": 1},)"
        R"({"name": "x","type": "string","value": "y"}]})",
        text);
  fails(1, "get @ n x", "the value 'x'", text);
  fails(4, "get @ n --default y", "does not load", "[]\n");
}

TEST_F(LtregValues, TakesPercentSignsAsTheyAreWhenAsked) {
  const std::string text = "[%Nix%\\B]\n\"n\"=ulong:1\n\n";
  fails(3, "get HKLM\\%Nix%\\B n", "--literal", text);
  shows("get HKLM\\%Nix%\\B n --literal", "1\n", text);
  changes("delete HKLM\\%Nix% -r --literal", text, "");
}

TEST_F(LtregValues, ShowsOfTwoOfANameTheOneThatProgramsRead) {
  fails(0, "list @", "holds the value 'N' more than once", holding("\"n\"=ulong:1\n\"N\"=ulong:2"),
        "ulong\tn\t1\n");
}

TEST_F(LtregValues, LeavesTheFilesAloneWhereNothingChanges) {
  const std::string text = "# a note\n[A\\B]\n\"s\"=dir:\"x\"\n\"l\"=liststring:\"a\",\"b\"\n";
  changes("set @ s x", text, text);
  changes("set @ l a b", text, text);
  EXPECT_EQ(m_folder.names(), (std::vector<std::string>{kStore, "qsconfig.dat"}));
}

TEST_F(LtregValues, CopiesAndRenames) {
  const std::string below = "[A\\B\\C]\n\"l\"=liststring:\"x\"\n\"d\"=dir:\"y\"\n\n";
  const std::string text = kOne + below;
  const std::string copied = "[X\\C]\n\"l\"=liststring:\"x\"\n\"d\"=string:\"y\"\n\n";
  changes("copy HKLM\\A\\B HKLM\\X\\B", kOne, std::string(kOne) + "[X\\B]\n\"n\"=ulong:1\n\n");
  changes("copy @ HKLM\\A\\B\\D", kOne, std::string(kOne) + "[A\\B\\D]\n\"n\"=ulong:1\n\n");
  changes("copy HKLM\\A\\B\\C HKLM\\X\\C", text, text + copied);
  changes("rename @ b", kOne, "[A\\b]\n\"n\"=ulong:1\n\n");
  changes("rename HKLM\\A X", kOne, "[X\\B]\n\"n\"=ulong:1\n\n");
  changes("rename @ n N", kOne, holding("\"N\"=ulong:1"));
  changes("rename @ n m", holding("\"n\"=ulong:1\n\"x\"=ulong:2"),
          holding("\"x\"=ulong:2\n\"m\"=ulong:1"));
  fails(3, "copy @ HKLM\\A\\B\\C", "a key 'HKEY_LOCAL_MACHINE\\A\\B\\C' already", text);
  fails(3, "copy @ HKLM\\X", "right below its root", text);
  fails(1, "copy HKLM\\Z HKLM\\X\\Y", "does not exist", text);
  fails(3, "rename HKLM\\A\\B\\C l D", "a value 'D' already", text);
  fails(1, "rename @ x y", "the value 'x'", text);
  fails(3, "rename @ x\\y", "no name of a key", text);
  fails(3, "rename HKLM x", "a root cannot be renamed", text);
  fails(2, "rename @ a b c", "takes a key", text);
}

TEST_F(LtregValues, TellsWrongUsageAndAboutItself) {
  fails(2, "", "ltreg --help", kOne);
  fails(2, "frobnicate", "'frobnicate' is no command", kOne);
  fails(2, "list HKLM \x1B[2J", "\\x1b[2J", kOne);
  fails(2, "get @", "NAME is required (see 'ltreg get --help')", kOne);
  fails(2, "set @ s a b", "takes one VALUE, not 2", kOne);
  fails(2, "set @ s --type dword 1", "'dword' is no type", kOne);
  fails(2, "set @ s -x", "go behind '--'", kOne);
  fails(2, "list HKLM --backend both", "both", kOne);
  fails(2, "list HKLM --store s.cfg --backend os", "leave one of them out", kOne);
  contains(run("--version").output, {"ltreg "});
  contains(run("--help").output, {"Exit codes", "\n  expand "});
  contains(run("set --help --backend os").output, {"--store", "NAME"});
  contains(run("help component check").output, {"CLASS", "--create"});
  contains(run("manual").output, {".TH LTREG 1\n", ".SS get KEY NAME... [\\-\\-default WORD]",
                                  ".SS component check CLASS [\\-\\-create]", "'HKLM\\eSoftware",
                                  ".B \\-\\-timeout SECONDS\n", ".SH EXIT STATUS\n"});
  EXPECT_EQ(run("manual").output.find("probe"), std::string::npos);
  shows("--backend file --json get @ n",
        R"({"version": 1,"values": [{"name": "n","type": "ulong","value": 1}]})", kOne);
}

TEST_F(LtregValues, RefusesTheRegistryThatTheSystemDoesNotHave) {
  shows("get @ n --backend file", "1\n", kOne);
  const std::string lines[] = {"list @", "set @ n 2", "path HKLM",
                               "check",  "vars",      "component check X"};
  for (const std::string& line : kOnWindows ? std::span<const std::string>() : std::span(lines)) {
    fails(2, line + " --backend os", "this system has no registry of its own", kOne);
  }
}

TEST_F(LtregValues, TakesVeryLongArguments) {
  const std::string text(kOnWindows ? 10000 : 100000, 'x');  // all that a command line there holds
  const std::string line = "\"" + text + "\"=string:\"" + text + "\"";
  contains(run("set @ " + text + ' ' + text).errors, {"has " + std::to_string(text.size())});
  EXPECT_EQ(store(), holding(line));
  shows("list @", "string\t" + text + "\t" + text + "\n", holding(line));
  fails(1, "list HKLM\\" + text + "\\B", "...' does not exist", kOne);
  fails(2, text, "xxx...' is no command", kOne);
}

}  // namespace
