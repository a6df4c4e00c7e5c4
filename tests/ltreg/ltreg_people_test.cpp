// What people see on a terminal, and what scripts get in its place.
#include <regex>

#include "tests/ltreg/ltreg_fixture.h"
#include "tests/support/system.h"

namespace {

using namespace LTLib::Testing;

constexpr char kText[] =
    "[A\\B]\n\"n\"=ulong:1\n\"paths\"=liststring:\"a\",\"b\"\n\n[A\\B\\C]\n\"n\"=ulong:2\n\n"
    "[A\\D]\n\"n\"=ulong:3\n\n";
constexpr char kIsOne[] = R"({"version": 1,"values": [{"name": "n","type": "ulong","value": 1}]})";

class LtregPeople : public LtregTest {};

TEST_F(LtregPeople, SeeColumnsColoursAndBranches) {
  if (kOnWindows) {
    GTEST_SKIP() << "it takes the program that lends a terminal";
  }
  m_folder.write(kStore, kText);
  m_folder.write(std::string(kStore) + "_old", kOne);
  m_folder.write("page.sh", "sed s/^/page:/\n");
  const std::string tree =
      "HKEY_LOCAL_MACHINE\n└─ A\n   ├─ B\n   │  ├─ n      ulong  1\n"
      "   │  ├─ paths  list  a, b\n   │  └─ C\n   │     └─ n  ulong  2\n"
      "   └─ D\n      └─ n  ulong  3\n";
  const std::string rows = "key    C\nulong  n      1\nlist   paths  a, b\n";
  const std::string key = "HKEY_LOCAL_MACHINE\\A\\";
  const std::tuple<const char*, const char*, std::string> cases[] = {
      {"", "tree HKLM", tree},
      {"", "list HKLM\\A\\B", rows},
      {"", "find HKLM 1", "ulong  " + key + "B  n  1\n"},
      {"", "get HKLM\\A\\B paths", "a\nb\n"},
      {"PAGER='sh page.sh'", "get HKLM\\A\\B n --pager", "page:1\n"},
      {"NO_COLOR= ", "list HKLM\\A\\D", "\x1B[36mulong\x1B[0m  n  3\n"},
      {"TERM=dumb NO_COLOR=", "list HKLM\\A\\D", "ulong  n  3\n"},
      {"", "list HKLM\\A\\D --color always", "\x1B[36mulong\x1B[0m  n  3\n"},
      {"", "diff old:HKLM HKLM --color always",
       "\x1B[32m+  " + key + "B    paths  list   a, b\x1B[0m\n\x1B[32m+  " + key +
           "B\\C  n      ulong  2\x1B[0m\n\x1B[32m+  " + key + "D    n      ulong  3\x1B[0m\n"},
  };
  for (const auto& [environment, line, expected] : cases) {
    const std::string command = "export TERM=xterm NO_COLOR=1; " + std::string(environment) + " '" +
                                m_program + "' " +
                                std::regex_replace(line, std::regex("\\\\"), "\\\\");
    const ProgramResult result =
        RunningProgram("/usr/bin/script", {"-qec", command, "/dev/null"}, m_folder.path()).wait();
    EXPECT_EQ(std::regex_replace(result.output, std::regex("\r"), ""), expected) << line;
  }
  shows("list HKLM\\A\\D --color always", "\x1B[36mulong\x1B[0m\tn\t3\n", kText);
}

TEST_F(LtregPeople, AreToldWhatTheyMayHaveMeant) {
  runs({
      {"lsit HKLM", 2, "", "'lsit' is no command; did you mean 'list'?", kText},
      {"component chek X", 2, "", "did you mean 'check'?", kText},
      {"list HKLN", 3, "", "did you mean 'HKLM'?", kText},
      {"list HKLM --color alwys", 2, "", "did you mean 'always'?", kText},
      {"set @ n --type strng x", 2, "", "did you mean 'string'?", kText},
      {"get @ pxyz", 1, "", "'pxyz' of 'HKEY_LOCAL_MACHINE\\A\\B' does not exist\n", kText},
      {"get @ paht", 1, "", "does not exist; did you mean 'paths'?\n", kText},
      {"list @\\CC\\D", 1, "", "did you mean 'HKEY_LOCAL_MACHINE\\A\\B\\C'?\n", kText},
      {"list HKLM\\other", 1, "", "'HKEY_LOCAL_MACHINE\\other' does not exist\n", kText},
  });
}

TEST_F(LtregPeople, TypeWhatTheyKnowFromTheSystemsTool) {
  const std::string list = "[X\\Y]\n\"l\"=liststring:\"a\",\\\n\"b\"\n\n";
  runs({
      {"query @", 0, "key\tC\nulong\tn\t1\nlist\tpaths\ta\tb\n", "", kText},
      {"query @ /v N", 0, "1\n", "", kText},
      {"query @ n --json", 0, kIsOne, "", kText},
      {"query HKLM\\A\\D /S", 0,
       "key\tHKEY_LOCAL_MACHINE\\A\\D\nulong\tHKEY_LOCAL_MACHINE\\A\\D\tn\t3\n", "", kText},
      {"query @ /ve", 1, "", "the value 'Default'", kText},
      {"add @ /v n /t REG_DWORD /d 0x2 /f", 0, "", "", kOne, holding("\"n\"=ulong:2")},
      {"add @ n 2", 0, "", "", kOne, holding("\"n\"=ulong:2")},
      {"add @ /ve /d /x", 0, "", "", {}, holding("\"Default\"=string:\"/x\"")},
      {"add HKLM\\X\\Y /v l /t REG_MULTI_SZ /d a\\0b", 0, "", "", {}, list},
      {"add HKLM\\X\\Y l --type list a b", 0, "", "", {}, list},
      {"add @", 2, "", "NAME is missing", kOne},
      {"set @ /v x", 0, "", "", {}, holding("\"/v\"=string:\"x\"")},
  });
}

TEST_F(LtregPeople, LeaveJsonToScripts) {
  const std::string file = R"("file":"HKEY_LOCAL_MACHINE.cfg","line":4}})";
  const std::string warned = std::string(kOne) + "\"u\"=Ulong:5\n";
  runs({
      {"list -r HKLM\\A\\D", 0,
       "key\tHKEY_LOCAL_MACHINE\\A\\D\nulong\tHKEY_LOCAL_MACHINE\\A\\D\tn\t3\n", "", kText},
      {"path HKLM --json",
       0,
       R"({"version": 1,"root": "HKEY_LOCAL_MACHINE","file": "HKEY_LOCAL_MACHINE.cfg"})",
       "",
       {}},
      {"expand --json x%CompanyName%",
       0,
       R"({"version": 1,"text": "x%CompanyName%","expanded": "xTarn Quillmere"})",
       "",
       {}},
      {"expand --trace --json %CompanyName%",
       0,
       R"({"version": 1,"text": "%CompanyName%","expanded": "Tarn Quillmere","steps": )"
       R"([{"name": "CompanyName","replacement": "Tarn Quillmere","text": "Tarn Quillmere"}]})",
       "",
       {}},
      {"check HKLM --json", 0,
       R"({"version": 1,"stores": [{"file": "HKEY_LOCAL_MACHINE.cfg","exists": true,)"
       R"("loads": true,"fault": null,"lines": 4,"values": 1,"warningCount": 1,"warnings": )"
       R"([{"line": 4,"message": "a value line without a name or with an unknown type, dropped",)"
       R"("text": "\"u\"=Ulong:5"}],"left": []}]})",
       "", warned},
      {"get @ x --json", 1, "", R"({"version":1,"error":{"code":1,"kind":"absent","message":")",
       kOne},
      {"get --json", 2, "", R"({"code":2,"kind":"usage",)", kOne},
      {"get @ n -- --json x", 1, "", "ltreg: the value '--json'", kOne},
      {"list --json X", 3, "", R"({"code":3,"kind":"input",)", kOne},
      {"list --json @", 4, "", file, std::string(kOne) + "[]\n"},
      {"list @ --view 32", 2, "", "store files have none", kOne},
  });
}

}  // namespace
