// Where things come from, what is left of them, and what changes.
#include <filesystem>
#include <system_error>

#include "ltlib/ltlib.h"
#include "tests/ltreg/ltreg_fixture.h"
#include "tests/support/system.h"

namespace {

using namespace LTLib::Testing;
namespace fs = std::filesystem;

constexpr char kTwo[] = "[A\\B]\n\"n\"=ulong:2\n\n";
constexpr char kChange[] =
    "-\tHKEY_LOCAL_MACHINE\\A\\B\tn\tulong\t1\n+\tHKEY_LOCAL_MACHINE\\A\\B\tn\tulong\t2\n";

class LtregInsight : public LtregTest {
 protected:
  void write(const std::string& suffix, const Store& text) {
    const std::string path = m_folder.path(kStore + suffix);
    fs::remove(path);
    if (text) {
      m_folder.write(kStore + suffix, *text);
    }
  }
};

TEST_F(LtregInsight, RecoversWhatASaveHasLeft) {
  const std::string file = kStore;
  const std::string one = file + "\tloads, 1 value\n";
  struct Row {
    Store store, old, fresh;
    const char* line;
    int exitCode;
    std::string output;
    Store storeAfter, wasAfter;
  };
  const std::string taken = "store\t" + file + "\twas " + file;
  const Row rows[] = {
      {kOne,
       kOne,
       {},
       "",
       0,
       "store\t" + one + "old\t" + file + "_old\tloads, 1 value\n",
       kOne,
       {}},
      {kOne,
       {},
       kTwo,
       "",
       1,
       "store\t" + one + "new\t" + file + "_new\tloads, 1 value\n" + kChange,
       kOne,
       {}},
      {{},
       kTwo,
       {},
       "",
       1,
       "store\t" + file + "\tdoes not exist\nold\t" + file + "_old\tloads, 1 value\n",
       {},
       {}},
      {"[]",
       kTwo,
       {},
       " --take old",
       0,
       taken + "_old\nkept\t" + file + "_was\twas " + file + "\n",
       kTwo,
       "[]"},
      {{}, {}, kTwo, " --take new", 0, taken + "_new\n", kTwo, {}},
      {kOne, "[]", {}, " --take old", 3, "", kOne, {}},
      {kOne, {}, {}, " --take new", 1, "", kOne, {}},
      {kOne, {}, {}, " --take both", 2, "", kOne, {}},
  };
  for (const Row& row : rows) {
    write("", row.store);
    write("_old", row.old);
    write("_new", row.fresh);
    write("_was", {});
    const ProgramResult result = run(std::string("recover HKLM") + row.line);
    EXPECT_EQ(result.exitCode, row.exitCode) << row.output << result.errors;
    EXPECT_EQ(result.output, row.output);
    EXPECT_EQ(store(), row.storeAfter) << row.output;
    EXPECT_EQ(fs::exists(m_folder.path(file + "_was")), row.wasAfter.has_value());
  }
  // What was set aside is found, too, and no earlier version is written over.
  write("_was", "earlier");
  write("_ol~", kTwo);
  EXPECT_EQ(run("recover HKLM --take old").exitCode, 0);
  EXPECT_EQ(store(), kTwo);
  EXPECT_EQ(readFile(m_folder.path(file + "_was")) + readFile(m_folder.path(file + "_wa~")),
            std::string("earlier") + kOne);
}

TEST_F(LtregInsight, ExplainsWhereAValueComesFrom) {
  m_folder.write(kStore,
                 "[A\\C]\n[A\\default]\n\"t\"=string:\"<%CurrentConfig%>\\\n\"\n\"n\"=ulong:7\n");
  const ProgramResult text = run("explain HKLM\\A\\%CurrentConfig% T");
  contains(text.output,
           {"key\tHKEY_LOCAL_MACHINE\\A\\default\nkey-step\tCurrentConfig\tdefault\tA\\default\n",
            "backend\tfile\t", "store\tHKEY_LOCAL_MACHINE.cfg\tthe default name",
            "header\t2\nline\t3\nlock\tqs_config_lock\t", "\t<default>\nexpanded\t<default>\n",
            "read\tnumber\t0x80004005\t\nread\ttext\t0x00000000\t<%CurrentConfig%>\n"});
  const std::string json = run("explain HKLM\\A\\default n --json").output;
  contains(json, {"\"line\": \"5\"", "\"raw\": \"7\"",
                  "\"as\": \"number\",\n        \"result\": \"0x00000000\""});
  const ScopedEnvironment variable("HKEY_LOCAL_MACHINE", m_folder.path(kStore));
  EXPECT_EQ(run("component register {1} absent.so").exitCode, 4);
  EXPECT_EQ(run("component register {1} absent.so --force").exitCode, 0);
  contains(run("explain HKLM\\%CLASSID%\\{1}").output,
           {"the environment variable HKEY_LOCAL_MACHINE\n", "\nclass\t{1}\t", "there is no file"});
  const ProgramResult absent = run("explain HKLM\\X\\Y n");
  EXPECT_EQ(absent.exitCode, 1);
  contains(absent.output, {"store\t"});
}

TEST_F(LtregInsight, JudgesSettingsByTheirDescription) {
  struct Row {
    std::string type;   // with its bounds
    const char* value;  // as the store has it
    std::string fault;
  };
  const std::string digits = R"(integer","least":"-5","most":"70)";
  const std::string names = R"(name","names":["fast","slow"],"help":")";
  const Row rows[] = {
      {digits, "ulong:70", ""},
      {digits, "string:\"-5\"", ""},
      {digits, "ulong:71", "'71' is not from -5 to 70"},
      {digits, "string:\"seven\"", "the string 'seven' is no integer"},
      {R"(integer","least":"0","most":"18446744073709551615)", "string:\"18446744073709551615\"",
       ""},
      {R"(bool","least":"0","most":"1)", "ulong:2", "'2' is not from 0 to 1"},
      {R"(double","least":"0.5","most":"1)", "string:\"0.25\"", "'0.25' is not from 0.5 to 1"},
      {"float", "string:\"1e99\"", "'1e99' does not fit"},
      {"text", "ulong:1", "the ulong '1' is no text"},
      {"list", "liststring:\"a\",\"b\"", ""},
      {"bytes", "liststring:\"a\",\"b\"", "the list 'a, b' is no bytes"},
      {R"(seconds","least":"1s","most":"60s)", "string:\"90000ms\"",
       "'90000ms' is not from 1s to 60s"},
      {names, "string:\"slow\"", ""},
      {names, "string:\"slwo\"", "'slwo' is not one of fast, slow; did you mean 'slow'?"},
  };
  std::string described;
  std::string store = "[A\\default]\n\"Setting99\"=ulong:1\n";
  std::string faults;
  const std::string key = "HKEY_LOCAL_MACHINE\\A\\default\t";
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const std::string name = "Row" + std::to_string(i);
    described += R"({"name":")" + name + R"(","default":["1"],"type":")" + rows[i].type + "\"},";
    store += '"' + name + "\"=" + rows[i].value + '\n';
    faults += rows[i].fault.empty() ? "" : key + name + '\t' + rows[i].fault + '\n';
  }
  // A second group of the key, and one of another root.
  const auto group = [](const std::string& of, const std::string& settings) {
    return R"({"format":"ltlib-settings","version":1,"key":")" + of + R"(","settings":[)" +
           settings + "]}\n";
  };
  described.pop_back();
  m_folder.write("s", group(R"(HKLM\\A\\%CurrentConfig%)", described) + '\n' +
                          group(R"(HKLM\\a\\default)", R"({"name":"Setting9","type":"bool",)"
                                                       R"("default":[],"help":"why"})") +
                          group(R"(HKCU\\A\\default)", ""));
  m_folder.write(kStore, store);
  faults += key + "Setting99\tnot described; did you mean 'Setting9'?\n";
  const ProgramResult result = run("check HKLM --settings s");
  EXPECT_EQ(result.output.substr(result.output.find('\n') + 1), faults);
  EXPECT_EQ(result.exitCode, 3);
  contains(run("check --settings s --json").output,
           {"\"name\": \"Row2\",\n      \"fault\": \"'71' is not from -5 to 70\""});
  EXPECT_EQ(run("check HKCU --settings s").exitCode, 1) << "the store alone is not there";
  contains(
      run(R"(explain HKLM\A\default --settings s)").output,
      {"setting\tRow0\tinteger\t1\tfrom -5 to 70\t\tas it should be\n",
       "setting\tSetting9\tbool\t\t\twhy\tnot set\nsetting\tSetting99\t\t\t\t\tnot described"});
  for (const std::string& bad : {std::string("{"), group("HKLX\\\\A", ""),
                                 group("HKLM", R"({"name":"n","type":"bol","default":[]})"),
                                 std::string(R"({"format":"ltlib-settings","version":2})")}) {
    m_folder.write("s", '\n' + bad);
    contains(run("explain HKLM\\A\\default n --settings s").errors, {"s:2: "});
  }
}

TEST_F(LtregInsight, WatchesWhatIsSaved) {
  m_folder.write(kStore, kOne);
  auto [changes, output] = makePipe();
  auto [notices, errors] = makePipe();
  const Process watcher({m_program,
                         {"watch", "HKLM\\a", "--json"},
                         m_folder.path(),
                         std::fopen(m_folder.write("input", "").c_str(), "r"),
                         output,
                         errors});
  const auto line = [](std::FILE* from) {
    char text[400] = "";
    return std::string(std::fgets(text, sizeof text, from) != nullptr ? text : "");
  };
  contains(line(notices), {"watching 'HKEY_LOCAL_MACHINE.cfg'"});
  EXPECT_EQ(run("set HKLM\\X\\Y n 1").exitCode, 0);
  EXPECT_EQ(run("set @ n 2").exitCode, 0);
  const std::string key =
      "\"key\":\"HKEY_LOCAL_MACHINE\\\\A\\\\B\",\"name\":\"n\",\"type\":\"ulong\"";
  EXPECT_EQ(line(changes), "{\"version\":1,\"change\":\"-\"," + key + ",\"value\":\"1\"}\n");
  EXPECT_EQ(line(changes), "{\"version\":1,\"change\":\"+\"," + key + ",\"value\":\"2\"}\n");
  // A store that is written in place may be seen while it is empty; Windows replaces none that the
  // watcher is reading.
  const auto replaceStore = [&](const std::string& text) {
    const std::string made = m_folder.write("new", text);
    std::error_code refused;
    do {
      std::filesystem::rename(made, m_folder.path(kStore), refused);
    } while (refused);
  };
  replaceStore("[");
  contains(line(notices), {"does not load"});
  replaceStore("[A\\B]\n\"l\"=liststring:\"a\",\"b\"\n");
  EXPECT_EQ(line(changes), "{\"version\":1,\"change\":\"-\"," + key + ",\"value\":\"2\"}\n");
  contains(line(changes), {"\"type\":\"list\",\"value\":[\"a\",\"b\"]}\n"});
  std::fclose(changes);
  std::fclose(notices);
}

}  // namespace
