// The operating system's registry: the tool against the system's own, under a key of the test's.
#include <atomic>
#include <cstdlib>
#include <thread>

#include "ltlib/ltlib.h"
#include "tests/ltreg/ltreg_fixture.h"

namespace {

using namespace LTLib::Testing;
using std::string_literals::operator""s;

// As the system's tool writes a text into files.
std::string wide(const std::u16string& text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

class LtregSystem : public LtregTest {
 protected:
  LtregSystem() {
    m_program = LTREG_WITHOUT_MARKER;
    void* const root = LTLib::predefinedRootHandle(REG_ROOT_CURRENT_USER);
    EXPECT_EQ(m_manager.regCreateKey(root, m_path.c_str(), &m_handle), 0);
  }
  ~LtregSystem() override {
    m_manager.regCloseKey(m_handle);
    (void)reg("delete " + m_key + " /f");
  }

  // The exit code of the system's own tool.
  [[nodiscard]] int reg(const std::string& line) const {
    return start(line, std::getenv("SystemRoot") + "\\system32\\reg.exe"s).wait().exitCode;
  }
  // Bytes that no tool writes.
  void put(const std::string& name, unsigned int type, const std::string& bytes) {
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto size = static_cast<unsigned int>(bytes.size());
    EXPECT_EQ(m_manager.regSetValueEx(m_handle, name.c_str(), type, data, size), 0);
  }

  QSWin32RegistryManager m_manager;
  void* m_handle = nullptr;
  const std::string m_path = "Software\\" + m_folder.name();
  const std::string m_key = "HKCU\\" + m_path;
  const std::string m_sub = m_key + "\\new\\\u00E4\U0001F600";
};

TEST_F(LtregSystem, ShowsWhatOthersWrote) {
  for (const std::string value :
       {" /ve /d text", " /v e /t REG_EXPAND_SZ /d %TEMP%", " /v l /t REG_MULTI_SZ /d a\\0b",
        " /v n /t REG_DWORD /d 4294967295", " /v q /t REG_QWORD /d 4294967296"}) {
    EXPECT_EQ(reg("add " + m_key + value), 0) << value;
  }
  EXPECT_EQ(reg("add " + m_sub + " /v \u4E2D /d \u0107\U0001F600"), 0);
  put("b", REG_BINARY, "\0\xFF"s);
  put("b0", REG_BINARY, "");
  put("d", REG_DWORD, "\1\2");
  put("l0", REG_MULTI_SZ, "\0"s);
  put("l1", REG_MULTI_SZ, "\0a\0\0b"s);
  put("m", 5, "\1\2\3\4");
  put("o", REG_NONE, "x");
  put("s", REG_SZ, "a\0b\0\0"s);
  put("t", REG_SZ, "open");
  const std::string name = "HKEY_CURRENT_USER\\" + m_path;
  contains(
      '\n' + run("tree " + m_key).output,
      {"\n" + name + "\n\t", "\n" + name + "\\new\n" + name + "\\new\\\u00E4\U0001F600\n\t",
       "\tstring\t\ttext\n", "\texpand\te\t%TEMP%\n", "\tlist\tl\ta\tb\n",
       "\tulong\tn\t4294967295\n", "\tqword\tq\t4294967296\n",
       "\tstring\t\u4E2D\t\u0107\U0001F600\n", "\tbinary\tb\t00ff\n", "\tbinary\tb0\t\n",
       "\ttype-4\td\t0102\n", "\tlist\tl0\t\n", "\tlist\tl1\t\ta\t\tb\n", "\ttype-5\tm\t01020304\n",
       "\tnone\to\t78\n", "\tstring\ts\ta\\x00b\\x00\n", "\tstring\tt\topen\n"});
  shows("get --json " + m_key + " q",
        R"({"version": 1,"values": [{"name": "q","type": "qword","value": 4294967296}]})", {});
  shows("get --json " + m_key + " o",
        R"({"version": 1,"values": [{"name": "o","type": "none","value": "78"}]})", {});
  shows("get " + m_key + " l0", "", {});
  put("large", REG_SZ, std::string(1 << 20, 'x') + "\u00E4");
  shows("get " + m_key + " large", std::string(1 << 20, 'x') + "\u00E4\n", {});
  contains(run("list HKCU").output, {"key\tSoftware\n"});
}

// A value that others change is shown as it was or as it is.
TEST_F(LtregSystem, ReadsWhatOthersAreWriting) {
  put("v", REG_SZ, "s");
  std::atomic<bool> done = false;
  std::thread writer([&] {
    while (!done) {
      put("v", REG_SZ, std::string(6000, 'l'));
      put("v", REG_SZ, "s");
    }
  });
  for (int round = 0; round < 10; ++round) {
    const std::string shown = run("get " + m_key + " v").output;
    EXPECT_TRUE(shown == "s\n" || shown == std::string(6000, 'l') + '\n') << shown.size();
  }
  done = true;
  writer.join();
}

TEST_F(LtregSystem, WritesWhatOthersRead) {
  for (const std::string& words : std::vector<std::string>{
           "'' text", "\u4E2D \u0107\U0001F600", "b --type binary 00fF", "e --type expand %TEMP%",
           "n --type ulong -1", "l --type list a b", "q --type qword 0x1", "o --type none ''",
           "m --type type-5 0102", "q 18446744073709551615"}) {
    changes("set " + m_sub + ' ' + words, {}, {});
  }
  const std::string name(16383, 'n');
  fails(0, "set " + m_sub + ' ' + name + " 1", "has 16383 bytes", {});
  fails(3, "set " + m_sub + " q 18446744073709551616", "is no qword", {});
  fails(3, "set " + m_sub + " b 0", "is no data in hexadecimal", {});
  contains(run("list " + m_sub).output, {"\t" + name + "\t1\n"});
  EXPECT_EQ(reg("export " + m_key + " all.reg /y"), 0);
  contains(
      readFile(m_folder.path("all.reg")),
      {wide(u"\\new\\\u00E4\U0001F600]\r\n@=\"text\""), wide(u"\"\u4E2D\"=\"\u0107\U0001F600\""),
       wide(u"\"b\"=hex:00,ff"), wide(u"\"e\"=hex(2):25,00,54,00,45,00,4d,00,50,00,25,00,00,00"),
       wide(u"\"n\"=dword:ffffffff"), wide(u"\"l\"=hex(7):61,00,00,00,62,00,00,00,00,00"),
       wide(u"\"q\"=hex(b):ff,ff,ff,ff,ff,ff,ff,ff"), wide(u"\"o\"=hex(0):"),
       wide(u"\"m\"=hex(5):01,02"), wide(u"nnn\"=\"1\"")});
  changes("delete " + m_sub + " \u4E2D", {}, {});
  EXPECT_EQ(reg("query " + m_sub + " /v \u4E2D"), 1);
  fails(1, "get " + m_sub + " \u4E2D", "does not exist", {});
  fails(3, "delete " + m_key, "has sub-keys", {});
  EXPECT_EQ(run("export " + m_key + " -o own.reg").exitCode, 0);
  const std::string listed = run("list " + m_sub).output;
  changes("delete " + m_key + " -r", {}, {});
  EXPECT_EQ(reg("query " + m_key), 1);
  EXPECT_EQ(reg("import own.reg"), 0);
  EXPECT_EQ(run("list " + m_sub).output, listed);
  changes("delete " + m_key + " -r", {}, {});
  EXPECT_EQ(run("import own.reg").exitCode, 0);
  EXPECT_EQ(run("list " + m_sub).output, listed);
  changes("delete " + m_key + " -r", {}, {});
  fails(1, "list " + m_key, "does not exist", {});
  fails(4, "list HKCU\\" + std::string(300, 'x'), "refused by the registry with error ", {});
}

// Half a pair of UTF-16 has no form in any narrow text.
TEST_F(LtregSystem, TellsOfNamesThatNobodyCanAskFor) {
  const std::u16string key = u"[HKEY_CURRENT_USER\\" + std::u16string(m_path.begin(), m_path.end());
  m_folder.write("odd.reg", wide(u"\uFEFFWindows Registry Editor Version 5.00\r\n\r\n" + key +
                                 u"\\v]\r\n\"\xD801\"=\"x\"\r\n\"n\"=\"y\"\r\n\r\n" + key +
                                 u"\\k\\\xD800]\r\n"));
  EXPECT_EQ(reg("import odd.reg"), 0);
  const ProgramResult value = run("list " + m_key + "\\v");
  const ProgramResult keys = run("tree " + m_key + "\\k");
  EXPECT_EQ(reg("delete " + m_key + "\\k /f"), 0);
  EXPECT_EQ(value.exitCode, 4);
  EXPECT_EQ(value.output, "string\tn\ty\n");
  EXPECT_EQ(keys.exitCode, 4);
  contains(value.errors + keys.errors, {" cannot be read: error 2, ", " in full: error 2, "});
}

TEST_F(LtregSystem, TheBackendGoesByTheMarkerUnlessItIsNamed) {
  put("n", REG_SZ, "of the system");
  m_folder.write("HKEY_CURRENT_USER.cfg", '[' + m_path + "]\n\"n\"=string:\"of a file\"\n");
  const std::string get = "get " + m_key + " n";
  for (const std::string program : {LTREG_WITHOUT_MARKER, LTREG_PROGRAM}) {
    m_program = program;
    shows(get, program == LTREG_PROGRAM ? "of a file\n" : "of the system\n", {});
    shows(get + " --backend file", "of a file\n", {});
    shows(get + " --backend os", "of the system\n", {});
    shows(get + " --store HKEY_CURRENT_USER.cfg", "of a file\n", {});
    shows("path HKCU --backend file", "HKEY_CURRENT_USER.cfg\n", {});
    fails(1, "path HKCU --backend os", "lies in the operating system's registry", {});
    contains(run("check --backend os").output, {"there is no store to check"});
  }
}

TEST_F(LtregSystem, WorksOnThePartThatIsAskedFor) {
  if (sizeof(void*) == 4) {
    GTEST_SKIP() << "there may be one part alone";
  }
  const std::string key = "HKLM\\Software\\" + m_folder.name() + "\\A";
  changes("set " + key + " n narrow --view 32", {}, {});
  changes("set " + key + " n wide --view 64", {}, {});
  shows("get " + key + " n", "wide\n", {});
  shows("get " + key + " n --view 32", "narrow\n", {});
  shows("get HKLM\\Software\\Wow6432Node\\" + m_folder.name() + "\\A n", "narrow\n", {});
  for (const std::string view : {" --view 32", " --view 64"}) {
    changes("delete HKLM\\Software\\" + m_folder.name() + " -r" + view, {}, {});
    fails(1, "get " + key + " n" + view, "does not exist", {});
  }
}

TEST_F(LtregSystem, ClassesAndVariablesLieThereToo) {
  const std::string id = m_folder.name();
  const bool wasThere = run("list HKLM\\%CompanyRoot%").exitCode == 0;
  EXPECT_TRUE(wasThere || run("component list").errors.empty());
  changes("component register " + id + " absent.dll --as-is", {}, {});
  changes("set HKLM\\%PublicVariables% " + id + " x%CurrentConfig%", {}, {});
  contains(run("component list").output, {id + "\tabsent.dll\n"});
  contains(run("component check " + id).output, {id + ": ", "absent.dll"});
  contains(run("vars").output, {id + "\tx%CurrentConfig%\txdefault\tpublic\n"});
  shows("expand %" + id + "%", "xdefault\n", {});
  changes("component unregister " + id, {}, {});
  changes("delete HKLM\\%PublicVariables% " + id, {}, {});
  EXPECT_TRUE(wasThere || run("delete HKLM\\%CompanyRoot% -r").exitCode == 0);
}

}  // namespace
