// The classes of component libraries: their entries, and what the check says of each kind of fault.
#include <filesystem>

#include "tests/ltreg/ltreg_fixture.h"

namespace {

namespace fs = std::filesystem;
using LTLib::Testing::LtregCase;
using LTLib::Testing::ProgramResult;
using LTLib::Testing::readFile;
using LTLib::Testing::Words;

constexpr char kClasses[] = "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared\\CLASSID";

std::string libraryPath(const std::string& name) {
  return LTLIB_TEST_LIBRARIES "/" + name + LTLIB_TEST_LIBRARY_SUFFIX;
}

std::string entry(const std::string& id, const std::string& line) {
  return std::string("[") + kClasses + "\\" + id + "]\n" + line + "\n\n";
}

std::string entryOf(const std::string& id, const std::string& library) {
  return entry(id, "\"InprocServer\"=string:\"" + library + "\"");
}

class LtregComponents : public LTLib::Testing::LtregTest {
 protected:
  // The check of a class whose entry names a library: how it ends, and what its one line holds.
  void checkClass(const std::string& id, const std::string& library, int exitCode,
                  const std::string& verdict, const Words& options = {}) const {
    SCOPED_TRACE(id + " in " + library);
    m_folder.write(kStore, entryOf(id, library));
    Words words{"component", "check", id};
    words.insert(words.end(), options.begin(), options.end());
    const ProgramResult result = run(words);
    EXPECT_EQ(result.exitCode, exitCode) << result.errors;
    EXPECT_EQ(result.output.find(id + ": "), 0u) << result.output;
    EXPECT_NE(result.output.find(verdict), std::string::npos) << result.output;
    EXPECT_EQ(result.output.find('\n'), result.output.size() - 1) << result.output;
  }
};

TEST_F(LtregComponents, EntersAndDeletesClasses) {
  const std::string file = m_folder.write("lib.so", "");
  const std::string x = entryOf("X", file);
  const std::string other = entryOf("Y", "elsewhere");
  const std::string shared = entry("X", "\"More\"=ulong:1\n\"InprocServer\"=string:\"l\"");
  for (const LtregCase& row : std::vector<LtregCase>{
           {{"component", "register", "X", "lib.so"}, 0, "", "", {}, x},
           {{"component", "register", "X", file}, 0, "", "", other, other + x},
           {{"component", "register", "X", "lib.so", "--as-is"},
            0,
            "",
            "",
            x,
            entryOf("X", "lib.so")},
           {{"component", "register", "X", "%L%", "--as-is"}, 0, "", "", x, entryOf("X", "%L%")},
           {{"component", "register", "X", file},
            0,
            "",
            "",
            entry("X", "\"InprocServer\"=ulong:1"),
            x},
           {{"component", "register", "", "lib.so"}, 3, "", "the empty text is none", x},
           {{"component", "register", "X", ""}, 3, "", "FILE is empty", x},
           {{"component", "register", "A\\B", "lib.so"}, 3, "", "'A\\B' holds a backslash", x},
           {{"component", "register", "A]", "lib.so"}, 3, "", "cannot hold ']'", x},
           {{"component", "register", "%Nope%", "lib.so"}, 3, "", "'Nope' is not defined", x},
           {{"component", "register", "X"}, 2, "", "ltreg component register --help", x},
           {{"component", "enter"}, 2, "", "'enter' is no command (see 'ltreg component", x},
           {{"component", "register", "X", "lib.so"}, 4, "", "does not load", "[]\n"},
           {{"component", "list"}, 0, "X\t" + file + "\nY\telsewhere\n", "", x + other},
           {{"component", "list"}, 0, "", "", entry("X", "\"InprocServer\"=ulong:1")},
           {{"component", "list"}, 0, "", "", {}},
           {{"component", "list", "--json"},
            0,
            "[\n  {\n    \"class\": \"Y\",\n    \"library\": \"elsewhere\"\n  }\n]\n",
            "",
            other},
           {{"component", "unregister", "X"}, 0, "", "", x + other, other},
           {{"component", "unregister", "X"}, 0, "", "", shared, entry("X", "\"More\"=ulong:1")},
           {{"component", "unregister", "X"}, 1, "", "an entry of the class 'X'", other},
           {{"component", "unregister", ""}, 3, "", "the empty text is none", other},
       }) {
    check(row);
  }
  m_folder.write(kStore, x);
  const ProgramResult early = run({"component", "register", "X", "later.so"});
  EXPECT_NE(early.errors.find("there is no file"), std::string::npos) << early.errors;
  EXPECT_EQ(store(), entryOf("X", m_folder.path("later.so")));
}

TEST_F(LtregComponents, ChecksEntries) {
  for (const LtregCase& row : std::vector<LtregCase>{
           {{"component", "check", "X"},
            1,
            "X: not registered; 'ltreg component register CLASS FILE' enters it\n",
            "",
            entryOf("Y", "y")},
           {{"component", "check", "X"},
            3,
            "X: its entry is a ulong, and the loader reads strings alone; 'ltreg component register"
            " CLASS FILE' enters it anew\n",
            "",
            entry("X", "\"InprocServer\"=ulong:1")},
           {{"component", "check", "X"}, 4, "", "does not load", "[]\n"},
           {{"component", "check", "X", "--timeout", "0"}, 2, "", "--timeout", {}},
       }) {
    check(row);
  }
  checkClass("X", "", 3, "its entry names no file");
}

TEST_F(LtregComponents, LooksAtTheFile) {
  // Headers of a machine that has no number of that name.
  std::string elf(
      "\x7F"
      "ELF\x02\x01\x01",
      7);
  elf.resize(64);
  elf[16] = 3;
  elf[18] = 8;
  std::string pe(96, '\0');
  pe.replace(0, 2, "MZ").replace(0x3C, 1, "\x40").replace(0x40, 2, "PE");
  pe.replace(0x44, 2, "\x4C\x01").replace(0x56, 2, "\x02\x20").replace(0x58, 2, "\x0B\x01");
  struct Case {
    const char* name;
    std::string bytes;
    const char* verdict;
  };
  const Case cases[] = {
      {"empty", "", "is no library; register the library's own file"},
      {"text", "#!/bin/sh\n", "is no library; register the library's own file"},
      {"short",
       std::string("\x7F"
                   "ELF\x02"),
       "is no library"},
      {"half", "MZ", "is no library"},
      {"lost", pe.substr(0, 0x50), "is no library"},
      {"elf", elf, "is a file of ELF for MIPS, 64 bits, and this system loads "},
      {"pe", pe, "is a file of PE for x86, 32 bits, and this system loads "},
  };
  for (const Case& row : cases) {
    checkClass("X", m_folder.write(row.name, row.bytes), 3, row.verdict);
  }
  checkClass("X", m_folder.path(), 3, "is no file but a folder");
  checkClass("X", m_folder.path("absent.so"), 1, "there is no file");
  checkClass("X", "%SharedRoot%/x.so", 1, "references in it are not expanded");
  checkClass("X", LTREG_PROGRAM, 3, LTREG_PROGRAM);
}

TEST_F(LtregComponents, SeesThroughEveryLibrary) {
  const Words create{"--create"};
  const std::string late = libraryPath("ltreg_crashes_late");
  checkClass("X", libraryPath("ltreg_exits"), 3,
             "ends the process with exit code 0 while it loads");
  checkClass("X", libraryPath("ltreg_hangs"), 3, "hangs for 5 s while it loads; look at",
             {"--timeout", "5"});
  checkClass("Crash.Now", late, 0, "healthy; '" + late + "' loads and offers the class\n");
  checkClass("X", libraryPath("component_quiet"), 3, "offers none of the registered classes");
  if (LTREG_KNOWS_WHAT_IS_MISSING) {
    checkClass("X", libraryPath("ltreg_aborts"), 3,
               "crashes with signal 6 (Aborted) while it loads");
    checkClass("Crash.Now", late, 3, "crashes with signal 6 (Aborted) while an object is", create);
    checkClass("Crash.AtEnd", late, 3, "(Aborted) when the process ends", create);
    checkClass("X", libraryPath("ltreg_needs_library"), 3, "needs the library 'libltreg_absent");
    checkClass("X", libraryPath("ltreg_needs_symbol"), 3,
               "needs the symbol '_Z15ltregTestAbsentv'");
    checkClass("X", "no such library.so", 1, "the system finds no library 'no such library.so'");
  }
}

TEST_F(LtregComponents, CreatesWhenAsked) {
  struct Case {
    const char* id;
    const char* verdict;
  };
  const Case cases[] = {
      {"Outcome.Refuses", "the factory fails with 0x80004005\n"},
      {"Outcome.StoresNothing", "the factory reports success and gives no object\n"},
      {"Outcome.ThrowsOwn", "the factory throws: own exception\n"},
      {"Outcome.ThrowsStandard", "the factory throws: standard exception\n"},
      {"Outcome.ThrowsNumber", "the factory throws what is no std::exception\n"},
      {"Outcome.InitFails", "Init fails with 0x80360001\n"},
      {"Outcome.InitThrows", "Init throws: from Init\n"},
  };
  const std::string library = libraryPath("component_outcomes");
  for (const Case& row : cases) {
    checkClass(row.id, library, 3, row.verdict, {"--create"});
    checkClass(row.id, library, 0, "loads and offers the class\n");
  }
  for (const char* id : {"Outcome.Good", "Outcome.Positive"}) {
    checkClass(id, library, 0, "offers the class, and an object was made and released\n",
               {"--create"});
  }
}

TEST_F(LtregComponents, TellsWhatALibraryOffersInstead) {
  const std::string pair = libraryPath("component_pair");
  m_folder.write("s.cfg", entryOf("Pair.Unknow", pair) + entryOf("Pair.Plain", pair) +
                              entryOf("Other", "other") + entryOf("Pair.Unknown", pair));
  const ProgramResult result = run({"component", "check", "Pair.Unknow", "--store", "s.cfg"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(result.output, "Pair.Unknow: '" + pair +
                               "' loads, but has no registrar for the class; of the registered"
                               " classes it offers 'Pair.Plain', 'Pair.Unknown'\n");
  EXPECT_EQ(result.errors, "");
  EXPECT_FALSE(store());
}

}  // namespace
