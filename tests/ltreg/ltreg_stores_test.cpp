// Which store the tool works on, and what it does with one that fails.
#include <thread>

#include "ltlib/ltlib.h"
#include "tests/ltreg/ltreg_fixture.h"
#include "tests/support/system.h"

namespace {

using namespace LTLib::Testing;
namespace fs = std::filesystem;
using LTLib::NamedMutex;

constexpr char kTwo[] = "[A\\B]\n\"n\"=ulong:2\n\n";
constexpr char kGet[] = "get @ n";
constexpr char kSet[] = "set @ n 2";

class LtregStores : public LtregTest {};

TEST_F(LtregStores, TakesTheStoreThatIsNamed) {
  m_folder.write("users.cfg", kOne);
  m_folder.write("other.cfg", kTwo);
  EXPECT_EQ(run("path HKU").output, "HKEY_USERS.cfg\n");
  const ScopedEnvironment variable("HKEY_USERS", m_folder.path("users.cfg"));
  EXPECT_EQ(run("path hkey_users").output, m_folder.path("users.cfg") + "\n");
  for (const std::string root : {"HKU", "HKLM", "HKCU", "HKCC", "HKCR"}) {
    EXPECT_EQ(run("get " + root + "\\A\\B n --store other.cfg").output, "2\n") << root;
  }
  EXPECT_EQ(run(R"(set HKCC\A\B n 1 --store other.cfg)").exitCode, 0);
  EXPECT_EQ(readFile(m_folder.path("other.cfg")), kOne);
  const std::vector<std::string> names{"other.cfg", "other.cfg_old", "qsconfig.dat", "users.cfg"};
  EXPECT_EQ(m_folder.names(), names);
}

TEST_F(LtregStores, NeverOverwritesAStoreThatDoesNotLoad) {
  for (const char* line : {kSet, kGet, "delete @ n", "delete HKLM\\A -r", "list @", "tree HKLM"}) {
    fails(4, line, "MACHINE.cfg:4: a header that names no key: []", std::string(kOne) + "[]\n");
  }
  fails(4, kSet,
        "MACHINE.cfg:4: a quoted value that begins here and never ends: \"t\"=string:\"\\x1b\\",
        std::string(kOne) + "\"t\"=string:\"\x1B\\\n and on\n");
}

TEST_F(LtregStores, RefusesWhatIsNoStore) {
  fs::create_directory(m_folder.path("folder"));
  fails(4, "set @ n 2 --store folder", "folder: it is no regular file", {});
  EXPECT_TRUE(fs::is_empty(m_folder.path("folder")));
  const std::string absent = (fs::path("absent") / "").make_preferred().string();
  fails(4, "set @ n 2 --store " + absent + "s.cfg", absent + "qsconfig.dat", {});
  fails(3, "list HKLM --store ''", "--store names no file", kOne);
  const ScopedEnvironment nothing("HKEY_LOCAL_MACHINE", "");
  fails(4, kSet, "the environment variable HKEY_LOCAL_MACHINE is set to nothing", kOne);
}

TEST_F(LtregStores, LeavesAStoreThatCannotBeSavedAsItWas) {
  const std::string refusal = "was not saved: ";
  const std::string inTheWay = m_folder.path(std::string(kStore) + "_new");
  fs::create_directory(inTheWay);
  fails(4, kSet, refusal + "the file " + std::string(kStore) + "_new cannot be made: ", kOne);
  fs::remove(inTheWay);
  fails(4, std::string(kSet) + " --force", refusal + "the key A\\B has the value b, which no line",
        std::string(kOne) + "\"b\"=binary:x\\\\\n");
  EXPECT_FALSE(fs::exists(inTheWay));
}

TEST_F(LtregStores, WaitsForTheLockAndTellsOnceThatItWasAbandoned) {
  shows(kGet, "1\n", kOne);
  const std::string name = readFile(m_folder.path("qsconfig.dat"));
  NamedMutex mutex(name.c_str());
  mutex.lock();
  RunningProgram reader = start(kGet, m_program);
  m_folder.write(kStore, kTwo);
  mutex.unlock();
  EXPECT_EQ(reader.wait().output, "2\n");
  std::thread([&] { NamedMutex(name.c_str()).lock(); }).join();
  fails(4, kSet, "(abandoned)", kOne);
  changes(kSet, kOne, kTwo);
  std::thread([&] { NamedMutex(name.c_str()).lock(); }).join();
  fails(0, kGet, "(abandoned)", kOne, "1\n");
}

// Where a reader still held the lock, whoever writes would wait until the test's time is up.
TEST_F(LtregStores, AReaderThatIsNotHeardKeepsNobodyOut) {
  m_folder.write(kStore, holding("\"n\"=string:\"" + std::string(1 << 20, 'x') + '"'));
  const auto [shown, output] = makePipe();
  const Process reader({m_program,
                        {"list", "HKLM\\A\\B"},
                        m_folder.path(),
                        std::fopen(m_folder.write("input", "").c_str(), "r"),
                        output});
  EXPECT_EQ(std::fgetc(shown), 's');
  EXPECT_EQ(run("set @ n 2").exitCode, 0);
  std::fclose(shown);
}

TEST_F(LtregStores, FiftyAtOnceLoseNothing) {
  std::vector<RunningProgram> running;
  for (int i = 0; i < 50; ++i) {
    const std::string key = i % 2 == 0 ? R"(HKLM\A\default)" : R"(HKLM\A\%CurrentConfig%)";
    running.push_back(
        start("set " + key + " n" + std::to_string(i) + " --type ulong 7", m_program));
  }
  for (RunningProgram& program : running) {
    EXPECT_EQ(program.wait().exitCode, 0);
  }
  EXPECT_EQ(run("check HKLM").output,
            "HKEY_LOCAL_MACHINE.cfg: loads, 52 lines, 50 values, 0 warnings\n");
}

TEST_F(LtregStores, ChecksStores) {
  const std::string file = kStore;
  const std::string warnings = file +
                               ":1: a value ahead of the first header, dropped: \"l\"=ulong:1\n" +
                               file + ":5: an indented line, dropped:  [C\\D]\n";
  const std::string others =
      "HKEY_CURRENT_USER.cfg: does not exist\nHKEY_CURRENT_CONFIG.cfg: does not exist\n"
      "HKEY_USERS.cfg: does not exist\nHKEY_CLASSES_ROOT.cfg: does not exist\n";
  const std::string good = file + ": loads, 3 lines, 1 value, 0 warnings\n";
  shows("check HKLM", warnings + file + ": loads, 5 lines, 1 value, 2 warnings\n",
        "\"l\"=ulong:1\n" + std::string(kOne) + " [C\\D]\n");
  shows("check", others + good, kOne);
  shows("check --store " + file, good, kOne);
  fails(4, "check", file + ":1: a header that", "[]", others + file + ": does not load\n");
  EXPECT_EQ(run("check HKU").exitCode, 1);
}

// A load drops lines in silence, and a save then loses them.
TEST_F(LtregStores, WarnsOfLinesThatASaveLoses) {
  const std::string two = "\"u\"=Ulong:5\n\"u\"=Ulong:5\n";
  m_folder.write(kStore, kOne + two + two + two + "\"e\"=string:\n");
  const std::string errors = run(kGet).errors;
  contains(errors, {"warning: HKEY_LOCAL_MACHINE.cfg:4: ", "cfg:8: ",
                    "there is more; 'ltreg check'", "Syntax error in command line # 10"});
  EXPECT_EQ(errors.find("cfg:9: "), std::string::npos);
}

// The tool with a shell's redirection; the store is opened while standard streams are missing.
TEST_F(LtregStores, ToleratesStreamsThatFail) {
  if (kOnWindows) {
    GTEST_SKIP() << "it takes a shell";
  }
  const auto codeOf = [&](const std::string& line, const std::string& redirection) {
    m_folder.write(kStore, std::string(kOne) + "\"u\"=Ulong:5\n\"e\"=string:\n");
    const std::string command = "exec '" LTREG_PROGRAM "' " + line + ' ' + redirection;
    return RunningProgram("/bin/sh", {"-c", command}, m_folder.path()).wait().exitCode;
  };
  for (const char* redirection : {">/dev/full", ">&-", ">&- 2>&- <&-", "2>&-", "2>/dev/full"}) {
    const bool noData = redirection[0] == '>';
    EXPECT_EQ(codeOf("get 'HKLM\\A\\B' n", redirection), noData ? 4 : 0) << redirection;
    EXPECT_EQ(codeOf("get 'HKLM\\A\\B' x", redirection), 1) << redirection;
    EXPECT_EQ(codeOf("set 'HKLM\\A\\B' n 2 --force", redirection), 0) << redirection;
    EXPECT_EQ(store(), holding("\"n\"=ulong:2\n\"e\"=string:\"\"")) << redirection;
    EXPECT_EQ(readFile(m_folder.path("qsconfig.dat")).size(), 46u);
  }
}

}  // namespace
