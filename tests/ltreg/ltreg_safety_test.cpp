// What keeps a store's content from getting lost, and whoever waits for it informed.
#include <fstream>

#include "ltlib/ltlib.h"
#include "tests/ltreg/ltreg_fixture.h"
#include "tests/support/system.h"

namespace {

using namespace LTLib::Testing;
namespace fs = std::filesystem;

constexpr char kTwo[] = "[A\\B]\n\"n\"=ulong:2\n\n";

class LtregSafety : public LtregTest {
 protected:
  // Runs a batch of these lines over a store.
  ProgramResult batch(const std::string& lines, const Store& before,
                      const std::string& options = "") {
    fs::remove(m_folder.path(kStore));
    if (before) {
      m_folder.write(kStore, *before);
    }
    m_folder.write("lines", lines);
    return run("batch lines" + options);
  }
};

TEST_F(LtregSafety, RefusesToDropLinesUnlessTheyAreKept) {
  const std::pair<std::string, std::string> rows[] = {
      {std::string("; note\n") + kOne, "1: ; note\n"},
      {"[A\\B] ; note\n\"n\"=ulong:1\n", "1: [A\\B] ; note\n"},
      {std::string(kOne) + "\"u\"=Ulong:5\n", "4: \"u\"=Ulong:5\n"},
      {std::string(kOne) + "[a\\b]\n", "4: [a\\b]\n"},
      {"[A\\B]\n\"n\"=dword:1\n\n", "2: \"n\"=dword:1\n"},
      {std::string(kOne) + "\"t\"=string:\"x\\\ny\" ; note\n",
       "4: \"t\"=string:\"x\\\ny\" ; note\n"},
  };
  int files = 0;
  m_folder.write("in.reg", "REGEDIT4\n[HKLM\\A\\B]\n\"n\"=dword:2\n");
  for (const auto& [text, dropped] : rows) {
    for (const char* line :
         {"set @ n 2", "delete @ n", "copy @ HKLM\\C\\D", "rename @ n m", "import in.reg"}) {
      fails(4, line, dropped.substr(dropped.find(' '), 9), text);
    }
    EXPECT_EQ(run("get @ n").output, "1\n");
    EXPECT_EQ(run("set @ n 1").exitCode, 0);
    EXPECT_EQ(store(), text);
    EXPECT_EQ(run("set @ n 2 --force").exitCode, 0);
    const std::string number = ++files > 1 ? "." + std::to_string(files) : "";
    EXPECT_EQ(readFile(m_folder.path(std::string(kStore) + ".dropped" + number)), dropped);
    EXPECT_EQ(store()->substr(0, sizeof kTwo - 2), std::string(kTwo).substr(0, sizeof kTwo - 2));
  }
}

TEST_F(LtregSafety, ABatchIsDoneAsAWholeOrNotAtAll) {
  const ProgramResult done = batch(
      "# a comment\n\nset 'HKLM\\A\\B' n 2\r\nset \"HKLM\\A\\B\" a\\ 'b' \"x \\\"y\\\" \\z\" # "
      "one\n"
      "get HKLM\\\\A\\\\B 'a b'\ndelete 'HKLM\\A\\B' 'a b'\nset 'HKLM\\X\\Y' n 1 --type ulong\n"
      "get 'HKLM\\X\\Y' n\ndelete 'HKLM\\X\\Y'\nset 'HKLM\\A\\%CurrentConfig%\\x' n 1\n"
      "delete 'HKLM\\A\\default' -r\n",
      kOne);
  EXPECT_EQ(done.errors + done.output, "x \"y\" \\z\n1\n");
  EXPECT_EQ(store(), kTwo);
  const std::tuple<int, const char*, const char*> rows[] = {
      {1, "get 'HKLM\\A\\B' m", ":2: the value 'm'"},
      {2, "path HKLM", ":2: 'path' stands in no batch"},
      {2, "set", ":2: KEY is required"},
      {2, "tree HKLM --store x", ":2: --store"},
      {3, "set 'HKCU\\A\\B' n 1", ":2: the key 'HKEY_CURRENT_USER\\A\\B' lies below a second root"},
      {3, "set 'HKLM\\A\\B n 1", ":2: a quote"},
      {1, "find 'HKLM\\A\\B' zzz", ":2: 'find' has found nothing"},
  };
  for (const auto& [exitCode, line, error] : rows) {
    const ProgramResult result = batch(std::string("set 'HKLM\\A\\B' n 2\n") + line, kOne);
    EXPECT_EQ(result.exitCode, exitCode) << line;
    contains(result.errors, {std::string("lines") + error, "nothing was changed"});
    EXPECT_EQ(store(), kOne) << line;
  }
  EXPECT_EQ(batch("set 'HKLM\\A\\B' n 2", std::string(";\n") + kOne).exitCode, 4);
  EXPECT_EQ(batch("set 'HKLM\\A\\B' n 2", std::string(";\n") + kOne, " --force").exitCode, 0);
  EXPECT_EQ(store(), kTwo);
}

// The other container's named locks are not ours, so that the lock on the identity file has to do.
TEST_F(LtregSafety, WaitsForOtherContainersAndTellsWhom) {
  shows("get @ n", "1\n", kOne);
  const std::string path = m_folder.path(kStore);
  auto guard = std::make_unique<LTLib::StoreGuard>(path);
  std::fstream(m_folder.path("qsconfig.dat"), std::ios::in | std::ios::out) << "qs_config_x";
  const std::string holder = kOnWindows ? "the lock of its folder" : "is held by process ";
  fails(4, "set @ n 2 --timeout 1", holder, kOne);
  fails(4, "get @ n --timeout 1", holder, kOne);
  RunningProgram waiting = start("set @ m 3", m_program);
  m_folder.write(kStore, kTwo);
  guard.reset();
  EXPECT_EQ(waiting.wait().exitCode, 0);
  EXPECT_EQ(store(), holding("\"n\"=ulong:2\n\"m\"=string:\"3\""));
}

// A folder in the place of the identity file stands for one that this user may not write.
TEST_F(LtregSafety, ReadsWithoutALockWhereThereIsNone) {
  fs::create_directory(m_folder.path("qsconfig.dat"));
  m_folder.write("other.cfg", kTwo);
  for (const std::string line : {"get @ n", "list @", "tree HKLM", "check HKLM", "find HKLM 1"}) {
    m_folder.write(kStore, kOne);
    const ProgramResult result = run(line);
    EXPECT_EQ(result.exitCode, 0) << line;
    contains(result.errors, {"is read without a lock"});
  }
  EXPECT_EQ(run("diff @ other.cfg").exitCode, 1);
  fails(4, "set @ n 2", "the store was not looked at", kOne);
  fails(1, "get @ n", "does not exist", {});
}

// The import waits for its text, while somebody else changes the store without looking at locks.
TEST_F(LtregSafety, TellsThatTheStoreChangedMeanwhile) {
  if (kOnWindows) {
    GTEST_SKIP() << "it takes a file name for standard input";
  }
  m_folder.write("lines", "get 'HKLM\\A\\B' n\nimport /dev/stdin\n");
  m_folder.write(kStore, std::string(kOne) + " [C]\n");
  auto [input, text] = makePipe();
  Process program(
      {m_program, {"batch", "lines"}, m_folder.path(), input, std::tmpfile(), std::tmpfile()});
  // More than a pipe takes has gone when the second line is at work.
  std::fputs(("REGEDIT4\n" + std::string(1 << 18, '\n')).c_str(), text);
  m_folder.write(kStore, std::string(kOne) + kTwo);
  std::fputs("[HKLM\\A\\B]\n\"n\"=dword:7\n", text);
  std::fclose(text);
  EXPECT_EQ(program.wait(), 6);
  EXPECT_EQ(store(), std::string(kOne) + kTwo);
}

}  // namespace
