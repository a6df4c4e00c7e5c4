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

TEST_F(LtregExchange, ReadsEveryKindOfLine) {
  imports(std::string("\xEF\xBB\xBF") + kHead +
              "; a note\r\n\r\n  [HKLM\\A\\B]\r\n\"a\"=\"x\\\\y\\\"z\" ; a note\n@=\"d\"\n"
              "\"D\" = dword:A\n\"m\"=hex(7):61,00,00,00,\\\n  62,00,00,00,00,00\n\"n\"=-\n"
              "\"b\"=hex:41,42 ; a "
              "note\n\"gone\"=-\n[-HKLM\\X]\n[-HKLM\\Y]\n[HKLM\\X\\Z]\n\"n\"=dword:2",
          std::string(kOne) + "[X\\Y]\n\"n\"=ulong:1\n\n",
          "[A\\B]\n\"a\"=string:\"x\\y\"z\"\n\"Default\"=string:\"d\"\n\"D\"=ulong:10\n"
          "\"m\"=liststring:\"a\",\\\n\"b\"\n\"b\"=binary:AB\n\n[X\\Z]\n\"n\"=ulong:2\n\n");
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
  fails(1, "import absent.reg", "cannot be read", kOne);
  fails(2, "export @ --encoding latin1", "no encoding", kOne);
}

TEST_F(LtregExchange, TellsWhatAStoreFileCannotHold) {
  m_folder.write("in.reg",
                 std::string(kHead) +
                     "[HKLM\\A\\B]\n\"q\"=hex(b):1,2,3,4,5,6,7,8\n\"z\"=hex:41,00,42\n"
                     "\"n\"=dword:2\n[HKLM\\T]\n\"n\"=dword:2\n\"l\"=hex(7):2c,00,00,00,00,00\n");
  for (const char* why : {":4: the value 'q' is of the type qword", ":5: the value holds a NUL",
                          ":8: a key right below", "cannot hold 4 values"}) {
    fails(3, "import in.reg", why, kOne);
  }
  const std::string set = "set\tHKEY_LOCAL_MACHINE\\A\\B\tn\tulong\t2\n";
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
      {"diff HKLM absent", "", 1},
  };
  m_folder.write("one.cfg", one);
  m_folder.write("one.cfg_old", two);
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
}

}  // namespace
