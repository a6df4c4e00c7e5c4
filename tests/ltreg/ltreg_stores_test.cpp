// Which store the tool works on, and what it does with one that fails.
#include <filesystem>
#include <thread>

#include "ltlib/ltlib.h"
#include "tests/ltreg/ltreg_fixture.h"

namespace {

namespace fs = std::filesystem;
using LTLib::NamedMutex;
using LTLib::Testing::LtregCase;
using LTLib::Testing::ProgramResult;
using LTLib::Testing::readFile;
using LTLib::Testing::RunningProgram;
using LTLib::Testing::ScopedEnvironment;
using LTLib::Testing::Words;

constexpr char kOne[] = "[A\\B]\n\"n\"=ulong:1\n\n";
constexpr char kTwo[] = "[A\\B]\n\"n\"=ulong:2\n\n";
const Words kGet{"get", "HKLM\\A\\B", "n"};
const Words kSet{"set", "HKLM\\A\\B", "n", "2"};

class LtregStores : public LTLib::Testing::LtregTest {
 protected:
  // A command that fails for its store, leaves it alone and makes nothing else.
  void checkFails(const Words& arguments, const std::string& errors) const {
    const std::optional<std::string> before = store();
    const ProgramResult result = run(arguments);
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find(errors), std::string::npos) << result.errors;
    EXPECT_EQ(store(), before);
    EXPECT_FALSE(fs::is_regular_file(m_folder.path(std::string(kStore) + "_new")));
  }
  [[nodiscard]] std::string lockName() const { return readFile(m_folder.path("qsconfig.dat")); }
};

TEST_F(LtregStores, TakesTheStoreThatIsNamed) {
  m_folder.write("users.cfg", kOne);
  m_folder.write("other.cfg", kTwo);
  EXPECT_EQ(run({"path", "HKU"}).output, "HKEY_USERS.cfg\n");
  const ScopedEnvironment variable("HKEY_USERS", m_folder.path("users.cfg"));
  EXPECT_EQ(run({"path", "hkey_users"}).output, m_folder.path("users.cfg") + "\n");
  EXPECT_EQ(run({"get", "HKU\\A\\B", "n"}).output, "1\n");
  for (const char* root : {"HKU", "HKLM", "HKCU", "HKCC", "HKCR"}) {
    const std::string key = std::string(root) + "\\A\\B";
    EXPECT_EQ(run({"get", key, "n", "--store", "other.cfg"}).output, "2\n") << root;
  }
  EXPECT_EQ(run({"set", "HKCC\\A\\B", "n", "1", "--store", "other.cfg"}).exitCode, 0);
  EXPECT_EQ(readFile(m_folder.path("other.cfg")), kOne);
  EXPECT_EQ(m_folder.names(), (Words{"other.cfg", "other.cfg_old", "qsconfig.dat", "users.cfg"}));
}

TEST_F(LtregStores, NeverOverwritesAStoreThatDoesNotLoad) {
  struct Case {
    const char* text;
    const char* errors;
  };
  const Case cases[] = {
      {"[A\\B]\n\"n\"=ulong:1\n[]\n\"m\"=ulong:1\n",
       "HKEY_LOCAL_MACHINE.cfg:3: a header that names no key: []"},
      {"[A\\B]\n\"n\"=ulong:1\n\n\"t\"=string:\"\x1B\\\n and on\n",
       "HKEY_LOCAL_MACHINE.cfg:4: a quoted value that begins here and never ends:"
       " \"t\"=string:\"\\x1b\\"},
  };
  const Words verbs[] = {kSet,
                         kGet,
                         {"delete", "HKLM\\A\\B", "n"},
                         {"delete", "HKLM\\A", "-r"},
                         {"list", "HKLM\\A\\B"},
                         {"tree", "HKLM"}};
  for (const Case& row : cases) {
    m_folder.write(kStore, row.text);
    for (const Words& verb : verbs) {
      SCOPED_TRACE(verb.front());
      checkFails(verb, row.errors);
    }
  }
}

TEST_F(LtregStores, RefusesWhatIsNoStore) {
  fs::create_directory(m_folder.path("folder"));
  const Words inFolder{"set", "HKLM\\A\\B", "n", "2", "--store", "folder"};
  checkFails(inFolder, "folder: it is no regular file");
  EXPECT_TRUE(fs::is_empty(m_folder.path("folder")));
  const std::string absent = (fs::path("absent") / "").make_preferred().string();
  checkFails({"set", "HKLM\\A\\B", "n", "2", "--store", absent + "s.cfg"}, absent + "qsconfig.dat");
  EXPECT_EQ(run({"list", "HKLM", "--store", ""}).exitCode, 3);
  const ScopedEnvironment nothing("HKEY_LOCAL_MACHINE", "");
  m_folder.write(kStore, kOne);
  checkFails(kSet, "the environment variable HKEY_LOCAL_MACHINE is set to nothing");
}

TEST_F(LtregStores, LeavesAStoreThatCannotBeSavedAsItWas) {
  m_folder.write(kStore, kOne);
  for (const char* suffix : {"_new", "_old"}) {
    const std::string inTheWay = m_folder.path(std::string(kStore) + suffix);
    fs::create_directory(inTheWay);
    checkFails(kSet, "cannot be saved and was left as it was; see to it that its folder");
    fs::remove(inTheWay);
  }
  m_folder.write(kStore, std::string(kOne) + "\"b\"=binary:x\\\\\n");
  checkFails(kSet, "cannot be saved and was left as it was; correct the lines");
}

TEST_F(LtregStores, TellsOfAnAbandonedLockOnce) {
  m_folder.write(kStore, kOne);
  EXPECT_EQ(run(kGet).output, "1\n");
  const NamedMutex kept(lockName().c_str());  // some systems forget a mutex that nobody has open
  std::thread([name = lockName()] { NamedMutex(name.c_str()).lock(); }).join();
  checkFails(kSet, "(abandoned)");
  EXPECT_EQ(run(kSet).exitCode, 0);
  EXPECT_EQ(store(), kTwo);
}

TEST_F(LtregStores, WaitsForTheLock) {
  m_folder.write(kStore, kOne);
  EXPECT_EQ(run(kGet).output, "1\n");
  NamedMutex mutex(lockName().c_str());
  mutex.lock();
  RunningProgram reader = start(kGet);
  m_folder.write(kStore, kTwo);
  mutex.unlock();
  EXPECT_EQ(reader.wait().output, "2\n");
}

TEST_F(LtregStores, FiftyAtOnceLoseNothing) {
  std::vector<RunningProgram> running;
  for (int i = 0; i < 50; ++i) {
    const std::string number = std::to_string(i);
    const char* key = i % 2 == 0 ? "HKLM\\A\\default" : "HKLM\\A\\%CurrentConfig%";
    running.push_back(start({"set", key, "n" + number, number, "--type", "ulong"}));
  }
  for (RunningProgram& program : running) {
    EXPECT_EQ(program.wait().exitCode, 0);
  }
  for (int i = 0; i < 50; ++i) {
    const std::string line = "\"n" + std::to_string(i) + "\"=ulong:" + std::to_string(i) + "\n";
    EXPECT_NE(store()->find(line), std::string::npos) << line;
  }
  EXPECT_EQ(run({"check", "HKLM"}).output,
            "HKEY_LOCAL_MACHINE.cfg: loads, 52 lines, 50 values, 0 warnings\n");
}

TEST_F(LtregStores, ChecksStores) {
  const std::string file = kStore;
  const std::string faulty =
      "\"l\"=ulong:1\n[A]\n\"m\"=ulong:1\n[A\\B]\n\"n\"=string:x\n\"u\"=Ulong:5\n [C\\D]\n";
  const std::string warnings =
      file + ":1: a value ahead of the first header, dropped: \"l\"=ulong:1\n" + file +
      ":3: a value of a key right below the root, which no program can read: \"m\"=ulong:1\n" +
      file + ":5: a value without a text, read as empty: \"n\"=string:x\n" + file +
      ":6: a value line without a name or with an unknown type, dropped: \"u\"=Ulong:5\n" + file +
      ":7: an indented line, dropped:  [C\\D]\n";
  const std::string noneOf[] = {
      "HKEY_CURRENT_USER.cfg: does not exist\n", "HKEY_CURRENT_CONFIG.cfg: does not exist\n",
      "HKEY_USERS.cfg: does not exist\n", "HKEY_CLASSES_ROOT.cfg: does not exist\n"};
  const std::string others = noneOf[0] + noneOf[1] + noneOf[2] + noneOf[3];
  for (const LtregCase& row : std::vector<LtregCase>{
           {{"check", "HKLM"},
            0,
            warnings + file + ": loads, 7 lines, 2 values, 5 warnings\n",
            "",
            faulty},
           {{"check"}, 0, others + file + ": loads, 3 lines, 1 value, 0 warnings\n", "", kOne},
           {{"check"}, 4, others + file + ": does not load\n", file + ":1: a header that", "[]"},
           {{"check", "--store", file},
            0,
            file + ": loads, 3 lines, 1 value, 0 warnings\n",
            "",
            kOne},
           {{"check", "HKU"}, 1, noneOf[2], "", {}},
       }) {
    check(row);
  }
}

// A load drops lines in silence, and a save then loses them.
TEST_F(LtregStores, WarnsOfLinesThatASaveLoses) {
  std::string text = kOne;
  for (int i = 0; i < 7; ++i) {
    text += "\"u\"=Ulong:5\n";
  }
  text += "\"e\"=string:\n";
  m_folder.write(kStore, text);
  const ProgramResult result = run(kGet);
  EXPECT_EQ(result.output, "1\n");
  for (const char* part : {"warning: HKEY_LOCAL_MACHINE.cfg:4: ", "cfg:8: ",
                           "there is more; 'ltreg check'", "Syntax error in command line # 11"}) {
    EXPECT_NE(result.errors.find(part), std::string::npos) << part << " in " << result.errors;
  }
  EXPECT_EQ(result.errors.find("cfg:9: "), std::string::npos);
}

}  // namespace
