// Registries in the text form of other tools.
#include "tests/ltreg/ltreg_fixture.h"

namespace {

using namespace LTLib::Testing;

constexpr char kHead[] = "Windows Registry Editor Version 5.00\r\n\r\n";

class LtregExchange : public LtregTest {
 protected:
  // Imports the text over a store.
  void imports(const std::string& text, const Store& before, const Store& after) {
    m_folder.write("in.reg", text);
    changes("import in.reg", before, after);
  }
  void refuses(const std::string& text, const std::string& why) {
    m_folder.write("in.reg", text);
    fails(3, "import in.reg", why, kOne);
  }
};

TEST_F(LtregExchange, WritesWhatOtherToolsRead) {
  const std::string list(20, 'x');
  std::string digits;
  for (int i = 0; i < 20; ++i) {
    digits += i == 11 ? "\\\r\n  78,00," : "78,00,";
  }
  const std::string text =
      holding("\"n\"=ulong:-1\n\"s\"=string:\"a\\b\"c\"\n\"b\"=binary:zz\n\"l\"=liststring:\"" +
              list + '"');
  shows("export @ --encoding utf8",
        std::string("\xEF\xBB\xBF") + kHead +
            "[HKEY_LOCAL_MACHINE\\A\\B]\r\n\"n\"=dword:ffffffff\r\n\"s\"=\"a\\\\b\\\"c\"\r\n"
            "\"b\"=hex:7a,7a\r\n\"l\"=hex(7):" +
            digits + "00,00,00,00\r\n\r\n",
        text);
}

TEST_F(LtregExchange, ComesBackAsItWas) {
  const std::string text =
      holding(
          "\"n\"=ulong:17\n\"s\"=string:\"\u00E4\u20AC\U0001F600\"\n\"e\"=string:\"\"\n"
          "\"l\"=liststring:\"a\",\\\n\"b\"\n\"b\"=binary:\x01zz") +
      "[A\\C\\D]\n\"Default\"=string:\"x\"\n\n";
  changes("export HKLM -o out.reg", text, text);
  EXPECT_EQ(readFile(m_folder.path("out.reg")).substr(0, 4), std::string("\xFF\xFEW\0", 4));
  changes("import out.reg", {}, text);
  shows("import out.reg -n", "", text);
  EXPECT_EQ(run("export HKLM -o absent/out.reg").exitCode, 4);
}

TEST_F(LtregExchange, KeepsTypesAndBytesAsJson) {
  const std::string text = holding(
      "\"n\"=ulong:-1\n\"s\"=string:\"a\"b\"\n\"x\"=string:\"\xFF\"\n\"b\"=binary:zz\n"
      "\"Default\"=liststring:\"a\",\\\n\"\xFE\xFE\"");
  changes("export HKLM -o out.json", text, text);
  EXPECT_EQ(
      readFile(m_folder.path("out.json")),
      "{\n  \"format\": \"ltreg-export\",\n  \"version\": 1,\n  \"keys\": [\n"
      "    {\"key\": \"HKEY_LOCAL_MACHINE\", \"values\": []},\n"
      "    {\"key\": \"HKEY_LOCAL_MACHINE\\\\A\", \"values\": []},\n"
      "    {\"key\": \"HKEY_LOCAL_MACHINE\\\\A\\\\B\", \"values\": [\n"
      "      {\"name\": \"n\", \"type\": \"ulong\", \"value\": 4294967295},\n"
      "      {\"name\": \"s\", \"type\": \"string\", \"value\": \"a\\\"b\"},\n"
      "      {\"name\": \"x\", \"type\": \"string\", \"value\": {\"base64\": \"/w==\"}},\n"
      "      {\"name\": \"b\", \"type\": \"binary\", \"value\": \"zz\"},\n"
      "      {\"name\": \"\", \"type\": \"list\", \"value\": [\"a\", {\"base64\": \"/v4=\"}]}]}\n"
      "  ]\n}\n");
  changes("import out.json", {}, text);
  m_folder.write("in.json", R"({"format": "ltreg-export", "version": 1, "keys": [
      {"key": "HKLM\\X", "deleted": true},
      {"key": "HKLM\\A\\B", "values": [{"name": "n", "deleted": true}]}]})");
  changes("import in.json", holding("\"n\"=ulong:1\n\"m\"=ulong:2") + "[X\\Y]\n\"n\"=ulong:1\n\n",
          holding("\"m\"=ulong:2"));
}

TEST_F(LtregExchange, TakesStoresAndPartsOfThem) {
  const std::string part = "[A\\B\\C]\n\"d\"=dir:\"x\"\n\n";
  const std::string other = "[A\\Bx]\n\"n\"=ulong:1\n\n";
  const std::string whole = kOne + part + other;
  for (const auto& [key, text] : {std::pair{"HKLM", whole}, std::pair{"HKLM\\A\\B", kOne + part}}) {
    changes(std::string("export -o out.cfg ") + key, whole, whole);
    EXPECT_EQ(readFile(m_folder.path("out.cfg")), text);
  }
  m_folder.write("in.cfg", "# a note\n" + (kOne + part + other));
  runs({
      {"import in.cfg HKLM\\a\\Bx", 0, "", "a comment", {}, "[A\\Bx]\n\"n\"=ulong:1\n\n"},
      {"import in.cfg HKLM\\A\\B\\C", 0, "", "a comment", {}, "[A\\B\\C]\n\"d\"=string:\"x\"\n\n"},
  });
  EXPECT_FALSE(std::filesystem::exists(m_folder.path("in.cfg_old")));
}

TEST_F(LtregExchange, ShowsWhatAChangeWouldMake) {
  const std::string n = "\tHKEY_LOCAL_MACHINE\\A\\B\tn\tulong\t1\n";
  const std::string two = "\tHKEY_LOCAL_MACHINE\\A\\B\tn\tulong\t2\n";
  m_folder.write("in.reg", std::string(kHead) + "[-HKLM\\A]\n[HKLM\\A\\B]\n\"n\"=dword:2\n");
  const std::pair<const char*, std::string> rows[] = {
      {"set @ n 2", "-" + n + "+" + two},
      {"set @ n 1", ""},
      {"delete @ n", "-" + n},
      {"delete HKLM\\A -r", "-" + n + "-\tHKEY_LOCAL_MACHINE\\A\n"},
      {"copy @ HKLM\\C\\D", "+\tHKEY_LOCAL_MACHINE\\C\\D\tn\tulong\t1\n"},
      {"rename @ n N", ""},
      {"rename @ n m", "+\tHKEY_LOCAL_MACHINE\\A\\B\tm\tulong\t1\n-" + n},
      {"import in.reg", "-" + n + "+" + two},
  };
  for (const auto& [line, output] : rows) {
    shows(std::string(line) + " -n", output, kOne);
  }
}

TEST_F(LtregExchange, MergesTheChangesOfTwoSides) {
  const std::string more = "\"m\"=ulong:2\n";
  const std::string conflict = "conflict\tHKEY_LOCAL_MACHINE\\A\\B\tn\n\tbase\tulong\t1\n";
  const std::string dir = "\"d\"=dir:\"x\"";
  const std::string base = holding("\"n\"=ulong:1\n" + dir);
  struct Row {
    std::string ours, theirs, merged;
    int exitCode = 0;
    std::string output = {};
  };
  const Row rows[] = {
      {base, base, base},
      {holding(dir), base, holding(dir)},
      {base, holding("\"n\"=ulong:2\n" + dir), holding("\"n\"=ulong:2\n" + dir)},
      {"# a note\n" + base, base, "# a note\n" + base},
      {holding("\"n\"=ulong:2\n" + dir), holding(dir), holding("\"n\"=ulong:2\n" + dir), 6,
       conflict + "\tours\tulong\t2\n\ttheirs\tabsent\n"},
      {holding(more + dir), base + "[X\\Y]\n\"n\"=ulong:1\n\n",
       holding(more + dir) + "[X\\Y]\n\"n\"=ulong:1\n\n"},
      {holding(more + dir), holding("\"n\"=string:\"s\"\n" + dir), holding(more + dir), 6,
       conflict + "\tours\tabsent\n\ttheirs\tstring\ts\n"},
      {base, holding(dir), holding(dir)},
      {"# a note\n" + base, holding(dir), "# a note\n" + base, 3},
  };
  m_folder.write("base.cfg", base);
  for (const Row& row : rows) {
    m_folder.write("ours.cfg", row.ours);
    m_folder.write("theirs.cfg", row.theirs);
    const ProgramResult result = run("merge base.cfg ours.cfg theirs.cfg");
    EXPECT_EQ(result.exitCode, row.exitCode) << result.errors;
    EXPECT_EQ(result.output, row.output);
    EXPECT_EQ(readFile(m_folder.path("ours.cfg")), row.merged);
  }
  m_folder.write("base.reg", std::string(kHead) + "[HKLM\\A]\n\"n\"=dword:1\n[HKLM\\B]\n");
  m_folder.write("ours.reg",
                 std::string(kHead) + "[HKLM\\A]\n\"n\"=dword:1\n[HKLM\\B]\n[HKLM\\C]\n");
  m_folder.write("theirs.reg", std::string(kHead) + "[HKLM\\A]\n\"n\"=-\n");
  EXPECT_EQ(run("merge base.reg ours.reg theirs.reg").exitCode, 3);
  m_folder.write("theirs.reg", std::string(kHead) + "[HKLM\\A]\n\"n\"=dword:2\n");
  EXPECT_EQ(run("merge base.reg ours.reg theirs.reg -o out.reg").exitCode, 0);
  EXPECT_EQ(run("diff out.reg theirs.reg").output, "-\tHKEY_LOCAL_MACHINE\\C\n");
  const std::vector<std::string> names = m_folder.names();
  EXPECT_EQ(std::count(names.begin(), names.end(), "qsconfig.dat"), 0);
}

TEST_F(LtregExchange, WritesPagesThatHoldNoMarkupOfTheData) {
  m_folder.write("two.cfg", holding("\"<i>\"=liststring:\"a&b\",\"\xFF\""));
  m_folder.write(kStore,
                 holding("\"<i>\"=string:\"</td><script>\"") + "[A\\B\\C]\n\"n\"=ulong:1\n\n");
  contains(run("tree HKLM --html").output,
           {"<h1>HKEY_LOCAL_MACHINE</h1>", "<p>4 keys, 2 values</p>",
            "<td class=\"name\">&lt;i&gt;</td><td class=\"type\">string</td>"
            "<td class=\"value\">&lt;/td&gt;&lt;script&gt;</td></tr>\n</tbody></table>\n"
            "<details open><summary>C</summary>",
            "</table>\n</details>\n</details>\n</details>\n</details>\n<script>"});
  contains(run("diff HKLM two.cfg --html").output,
           {"<h1>HKLM \u2192 two.cfg</h1>", "HKEY_LOCAL_MACHINE\\A\\B\\C (deleted)",
            "<td class=\"gone\">&lt;/td&gt;&lt;script&gt;</td><td class=\"type\">list</td>"
            "<td class=\"came\">a&amp;b\n\\xff</td>"});
}

TEST_F(LtregExchange, ReadsEveryKindOfLine) {
  imports(std::string("\xEF\xBB\xBF") + kHead +
              "; a note\r\n\r\n  [HKLM\\A\\B]\r\n\"a\"=\"x\\\\y\\\"z\" ; a note\n@=\"d\"\n"
              "\"D\" = dword:A\n\"m\"=hex(7):61,00,00,00,\\\n  62,00,00,00,00,00\n\"n\"=-\n"
              "\"b\"=hex:41,\\ ; a note\n\n; a note\n 42 ; a "
              "note\n\"gone\"= - ; a note\n[-HKLM\\X]\n[-HKLM\\Y]\n# a note\n[HKLM\\\\X\\Z\\] ; "
              "a note\n\"n\"=dword:2",
          std::string(kOne) + "[X\\Y]\n\"n\"=ulong:1\n\n",
          "[A\\B]\n\"a\"=string:\"x\\y\"z\"\n\"Default\"=string:\"d\"\n\"D\"=ulong:10\n"
          "\"m\"=liststring:\"a\",\\\n\"b\"\n\"b\"=binary:AB\n\n[X\\Z]\n\"n\"=ulong:2\n\n");
  imports("REGEDIT4\r[HKLM\\A\\B]\r\"n\"=hex(7):00,00\r", kOne, holding("\"n\"=liststring:\"\""));
  imports("REGEDIT4\n[HKLM\\A\\B]\n\"n\"=hex(1):78,00\n", kOne, holding("\"n\"=string:\"x\""));
}

TEST_F(LtregExchange, ChangesNothingWhereALineMakesNoSense) {
  const std::string key = std::string(kHead) + "[HKLM\\A\\B]\n\"n\"=dword:2\n";
  refuses("[HKLM\\A\\B]\n", "in.reg:1: the first line");
  refuses(kHead, "names no key");
  refuses(std::string(kHead) + "\"n\"=dword:2\n", "in.reg:3: a value ahead of");
  refuses(std::string(kHead) + "[-HKLM\\A]\n\"n\"=dword:2\n", "in.reg:4: a value of a key that");
  refuses(key + "[HKCU\\A\\B]\n", "in.reg:5: a key of a second root");
  const std::pair<const char*, const char*> rows[] = {
      {"[HKXX\\A]", "no root"},
      {"[HKLM\\A", "closing bracket"},
      {"x", "no header, value"},
      {"\"n\" dword:1", "'='"},
      {"\"n\"=dword:", "of 32 bits"},
      {"\"n\"=dword:1 2", "more behind"},
      {"\"n\"=\"x", "quote"},
      {"\"n\"=\"x\"y", "more behind"},
      {"\"n\"=hex(:00", "type's number"},
      {"\"n\"=hex:0g", "more"},
      {"\"n\"=hex:00,\\", "no line"},
      {"\"n\"=hex(2:00", "bracket"},
      {"\"n\"=hex00", "colon"},
      {"\"n\"=hex:100", "no byte"},
      {"\"n\"=word:1", "neither a text"},
      {"\"n", "closing quote"},
      {"\"n\"=\"x\\", "nothing behind"},
  };
  for (const auto& [line, why] : rows) {
    refuses(key + line, why);
  }
  const std::pair<const char*, const char*> exports[] = {
      {"{", "in.json:1: no JSON"},
      {"{}", "in.json:1: no export of ltreg"},
      {R"({"format": "ltreg-export", "version": 2, "keys": []})", "version 2"},
      {R"({"format": "ltreg-export", "version": 1})", "no array"},
      {"{\"keys\": [\n{\"values\": []}]}", "in.json:2: an object without \"key\""},
      {R"({"keys": [{"key": "HKXX"}]})", "no root"},
      {R"({"keys": [{"key": {"base64": "A"}}]})", "neither a text"},
      {R"({"keys": [{"values": [{"name": "n", "type": "word"}]}]})", "no type"},
      {R"({"keys": [{"values": [{"name": "n", "type": "ulong", "value": -1}]}]})", "no number"},
      {R"({"keys": [{"values": [{"name": "n", "type": "list", "value": "a"}]}]})", "no array"},
      {R"({"keys": [{"values": [{"name": "n", "deleted": true}], "key": "HKLM", "deleted": true}]})",
       "values of a key"},
  };
  for (const auto& [text, why] : exports) {
    m_folder.write("in.json", text);
    fails(3, "import in.json", why, kOne);
  }
  m_folder.write("in.cfg", kOne);
  fails(2, "import in.cfg", "names no root", kOne);
  fails(2, "export @ --encoding utf8 --format json", "goes with --format reg", kOne);
  m_folder.write("in.cfg", "[]");
  fails(4, "import in.cfg HKLM", "alone: in.cfg:1: ", kOne);
  fails(1, "import absent.reg", "cannot be read", kOne);
  fails(2, "export @ --encoding latin1", "is none of utf8, utf16", kOne);
}

TEST_F(LtregExchange, TellsWhatAStoreFileCannotHold) {
  m_folder.write("in.reg",
                 std::string(kHead) +
                     "[HKLM\\A\\B]\n\"q\"=hex(b):1,2,3,4,5,6,7,8\n\"z\"=hex:41,00,42\n"
                     "\"n\"=dword:2\n[HKLM\\T]\n\"n\"=dword:2\n\"l\"=hex(7):2c,00,00,00,00,00\n");
  for (const char* why :
       {":4: the value 'q' is of the type qword", ":5: the value holds a NUL",
        ":8: a key right below", "cannot hold 5 entries", ":7: the key 'T' would hold no value"}) {
    fails(3, "import in.reg", why, kOne);
  }
  const std::string set =
      "-\tHKEY_LOCAL_MACHINE\\A\\B\tn\tulong\t1\n+\tHKEY_LOCAL_MACHINE\\A\\B\tn\tulong\t2\n";
  fails(0, "import in.reg --lossy -n", ":8: ", kOne, set);
  EXPECT_EQ(run("import in.reg --lossy").exitCode, 0);
  EXPECT_EQ(store(), holding("\"n\"=ulong:2"));
}

TEST_F(LtregExchange, ComparesAndMakesTheOneOutOfTheOther) {
  const std::string one = std::string(kOne) + "[A\\C\\D]\n\"l\"=liststring:\"a\"\n\n";
  const std::string two =
      "[A\\B]\n\"N\"=ulong:2\n\"t\"=string:\"x\"\n\n[A\\B\\E]\n\"n\"=ulong:1\n\n";
  const std::string inB =
      "-\tHKEY_LOCAL_MACHINE\\A\\B\tn\tulong\t1\n+\tHKEY_LOCAL_MACHINE\\A\\B\tN\tulong\t2\n"
      "+\tHKEY_LOCAL_MACHINE\\A\\B\tt\tstring\tx\n";
  const std::string added = "+\tHKEY_LOCAL_MACHINE\\A\\B\\E\tn\tulong\t1\n";
  const std::string all = inB +
                          "-\tHKEY_LOCAL_MACHINE\\A\\C\n"
                          "-\tHKEY_LOCAL_MACHINE\\A\\C\\D\tl\tlist\ta\n" +
                          added;
  m_folder.write("two.cfg", two);
  m_folder.write(std::string(kStore) + "_old", two);
  m_folder.write("two.reg", std::string(kHead) +
                                "[HKCU\\A\\b]\n\"N\"=dword:2\n\"t\"=\"x\"\n"
                                "[HKCU\\A\\B\\E]\n\"n\"=dword:1\n[HKCU\\X\\Y]\n");
  const std::tuple<const char*, std::string, int> rows[] = {
      {"diff HKLM two.cfg", all, 1},
      {"diff @ two.cfg", inB + added, 1},
      {"diff @ two.reg", inB + added, 1},
      {"diff one.cfg two.cfg", all, 1},
      {"diff @ @", "", 0},
      {"diff @ HKLM\\A\\C\\D --patch", "", 1},
      {"diff two.cfg two.reg", "+\tHKEY_LOCAL_MACHINE\\X\n+\tHKEY_LOCAL_MACHINE\\X\\Y\n", 1},
      {"diff two.cfg old:one.cfg", "", 0},
      {"diff file:HKLM\\A\\B two.json", inB + added, 1},
      {"diff two.json two.cfg", "", 0},
      {"diff HKLM absent", "", 1},
  };
  m_folder.write("one.cfg", one);
  m_folder.write("one.cfg_old", two);
  EXPECT_EQ(run("export HKLM --store two.cfg --format json -o two.json").exitCode, 0);
  for (const auto& [line, output, exitCode] : rows) {
    m_folder.write(kStore, one);
    const ProgramResult result = run(line);
    EXPECT_EQ(result.exitCode, exitCode) << line << result.errors;
    EXPECT_EQ(result.output.find(kHead) == 0 ? "" : result.output, output) << line;
  }
  m_folder.write("patch.reg", run("diff HKLM two.cfg --patch").output);
  changes("import patch.reg", one,
          "[A\\B]\n\"n\"=ulong:2\n\"t\"=string:\"x\"\n\n[A\\B\\E]\n\"n\"=ulong:1\n\n");
  EXPECT_EQ(run("diff old:HKLM one.cfg").exitCode, 0);
  fails(
      1, "diff HKLM two.cfg --json", "", holding("\"n\"=ulong:2\n\"t\"=string:\"y\""),
      R"({"version": 1,"differences": [{"key": "HKEY_LOCAL_MACHINE\\A\\B","change": "changed","values": [{"name": "t",)"
      R"("before": {"type": "string","value": "y"},"after": {"type": "string","value": "x"}}]},)"
      R"({"key": "HKEY_LOCAL_MACHINE\\A\\B\\E","change": "added","values": [{"name": "n",)"
      R"("before": null,"after": {"type": "ulong","value": 1}}]}]})");
}

}  // namespace
