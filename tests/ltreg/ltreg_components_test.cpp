// The classes of component libraries: their entries, and what the check says of each kind of fault.
#include "ltlib/ltlib.h"
#include "tests/ltreg/ltreg_fixture.h"

namespace {

using namespace LTLib::Testing;
using std::string_literals::operator""s;

constexpr char kClasses[] = R"([Software\Tarn Quillmere\Suite RZ 7.0\default\Shared\CLASSID\)";

std::string libraryPath(const std::string& name) {
  return LTLIB_TEST_LIBRARIES "/" + name + LTLIB_TEST_LIBRARY_SUFFIX;
}

std::string entry(const std::string& id, const std::string& line) {
  return kClasses + id + "]\n" + line + "\n\n";
}

std::string entryOf(const std::string& id, const std::string& library) {
  return entry(id, "\"InprocServer\"=string:\"" + library + "\"");
}

class LtregComponents : public LtregTest {
 protected:
  // The check of a class whose entry names a library: how it ends, and what its one line holds.
  void finds(int exitCode, const std::string& id, const std::string& library,
             const std::string& verdict, const std::string& options = "") const {
    m_folder.write(kStore, entryOf(id, library));
    const ProgramResult result = run("component check " + id + ' ' + options);
    EXPECT_EQ(result.exitCode, exitCode) << result.output << result.errors;
    EXPECT_EQ(result.output.find(id + ": "), 0u) << result.output;
    contains(result.output, {verdict});
    EXPECT_EQ(result.output.find('\n'), result.output.size() - 1) << result.output;
  }
};

TEST_F(LtregComponents, EntersAndDeletesClasses) {
  const std::string file = m_folder.write("lib.so", "");
  const std::string x = entryOf("X", file);
  const std::string y = entryOf("Y", "elsewhere");
  const std::string number = entry("X", "\"InprocServer\"=ulong:1");
  changes("component register X lib.so", {}, x);
  changes("component register X '" + file + "'", number + y, x + y);
  changes("component register X %L% --as-is", x, entryOf("X", "%L%"));
  fails(3, "component register '' lib.so", "the empty text is none", x);
  fails(3, "component register X ''", "FILE is empty", x);
  fails(3, R"(component register A\B lib.so)", "'A\\B' holds a backslash", x);
  fails(3, "component register A] lib.so", "cannot hold ']'", x);
  fails(2, "component enter", "'enter' is no command (see 'ltreg component", x);
  shows("component list", "X\t" + file + "\nY\telsewhere\n", x + y);
  shows("component list", "X\t1\tit is a ulong, no string\n", number);
  shows("component list --backend file", "", {});
  shows("component list --json",
        R"({"version": 1,"classes": [{"class": "Y","library": )"
        R"("elsewhere","form": null,"fault": null}]})",
        y);
  changes("component unregister X", x + y, y);
  changes("component unregister X", entry("X", "\"More\"=ulong:1\n\"InprocServer\"=string:\"l\""),
          entry("X", "\"More\"=ulong:1"));
  fails(1, "component unregister X", "an entry of the class 'X'", y);
  contains(run("component register Y later.so").errors, {"there is no file"});
  EXPECT_EQ(store(), entryOf("Y", m_folder.path("later.so")));
}

TEST_F(LtregComponents, EntersAllThatALibraryOffersAndTellsOfItsClasses) {
  const std::string pair = libraryPath("component_pair");
  const std::string both = entryOf("Pair.Unknown", pair) + entryOf("Pair.Plain", pair);
  const std::string offers = libraryPath("component_offers");
  const std::string told = entryOf("Example.Hello", offers) + entryOf("Offers.Bare", offers) +
                           entryOf("Offers.Named", offers);
  const auto row = [&](const char* id) { return id + ('\t' + offers + '\n'); };
  const std::string rows = row("Example.Hello") + row("Offers.Bare") + row("Offers.Named");
  const std::string gone = m_folder.path("gone.so");
  const std::string left = both + entryOf("Bare", "bare.so");
  const std::string all = left + entryOf("Gone", gone);
  const auto marked = [&](const std::string& first, const std::string& second) {
    return "Pair.Unknown\t" + pair + first + "\nPair.Plain\t" + pair + second + '\n';
  };
  runs({
      {"component register --as-is --all '" + pair + "'", 0, marked("", ""), "", {}, both},
      {"component register X", 2, "", "takes CLASS and FILE, or --all LIBRARY", {}},
      {"component unregister", 2, "", "takes CLASS, or --missing", {}},
      {"component unregister --missing", 0, "Gone\t" + gone + "\n", "", all, left},
      {"component unregister Pair.Plian", 1, "", "did you mean 'Pair.Plain'?", both},
      {"component check Pair.Plian", 1,
       "Pair.Plian: not registered; 'ltreg component register CLASS FILE' enters it; did you mean"
       " 'Pair.Plain'?\n",
       "", both},
      {"component list", 0, "Gone\t" + gone + "\tthere is no such file\n", "",
       entryOf("Gone", gone)},
      {"component list --load", 0, marked("\tcomponent", "\tplain"), "", both},
      {"component check Pair.Plain --json", 0,
       R"({"version": 1,"class": "Pair.Plain","library": ")" + pair +
           R"(","form": "plain","healthy": true,"verdict": "healthy; ')" + pair +
           R"(' loads and offers the class as a plain one"})",
       "", both},
  });
  fails(1, "component register --all l.so",
        "'l.so' tells of no class: it cannot be read; nor does 'l.classes'", {});
  shows("component offers '" + offers + "'",
        "Example.Hello\tExample.Greeter/1.0, Example.Counter/1.0\tgreets by name\n"
        "Offers.Bare\t\t\nOffers.Named\t\t\n",
        {});
  contains(run("component offers --json '" + offers + "'").output,
           {R"("words": "greets by name")"});
  runs({{"component register --as-is --all '" + offers + "'", 0, rows, "", {}, told}});
  contains(run("explain HKLM\\%CLASSID%\\Example.Hello").output,
           {"\noffer\tExample.Greeter/1.0, Example.Counter/1.0\tgreets by name\n"});
}

TEST_F(LtregComponents, ChecksEntries) {
  finds(1, "X", "", "not registered; 'ltreg component register CLASS FILE' enters it", "--store n");
  finds(5, "X", "", "its entry names no file");
  fails(5, "component check X", "", entry("X", "\"InprocServer\"=ulong:1"),
        "X: its entry is a ulong, and the loader reads strings alone; 'ltreg component register"
        " CLASS FILE' enters it anew\n");
  fails(2, "component check X --timeout 0", "--timeout", {});
}

TEST_F(LtregComponents, LooksAtTheFile) {
  // Headers of machines that no test runs on.
  const std::string elf = "\177ELF\2\1\1\0\0\0\0\0\0\0\0\0\3\0\x8\0"s;
  const std::string pe =
      "MZ" + std::string(58, '\0') + "@\0\0\0PE\0\0\x4C\1"s + std::string(16, '\0') + "\2\x20\xB\1";
  for (const std::string& bytes : {""s, elf.substr(0, 19), pe.substr(0, pe.size() - 1)}) {
    finds(5, "X", m_folder.write("faulty", bytes), "is no library; register the library's own");
  }
  finds(5, "X", m_folder.write("elf", elf), "is a file of ELF for MIPS, 64 bits, and this system");
  finds(5, "X", m_folder.write("pe", pe), "is a file of PE for x86, 32 bits, and this system");
  finds(5, "X", m_folder.path(), "is no file but a folder");
  finds(1, "X", m_folder.path("absent.so"), "there is no file");
  finds(1, "X", "%SharedRoot%/x.so", "references in it are not expanded");
  finds(5, "X", LTREG_PROGRAM, LTREG_PROGRAM);
}

TEST_F(LtregComponents, SeesThroughEveryLibrary) {
  const std::string late = libraryPath("ltreg_crashes_late");
  const std::string crash = "crashes with signal 6 (Aborted) ";
  finds(5, "X", libraryPath("ltreg_exits"), "ends the process with exit code 0 while it loads");
  finds(5, "X", libraryPath("ltreg_hangs"), "hangs for 3 s while it loads; look", "--timeout 3");
  finds(0, "Crash.Now", late,
        "healthy; '" + late + "' loads and offers the class as a component\n");
  finds(5, "X", libraryPath("component_quiet"), "offers none of the registered classes");
  if (LTREG_KNOWS_WHAT_IS_MISSING) {
    finds(5, "X", libraryPath("ltreg_aborts"), crash + "while it loads");
    finds(5, "Crash.Now", late, crash + "while an object is", "--create");
    finds(5, "Crash.AtEnd", late, crash + "when the process ends", "--create");
    const std::string throws = " throws while it loads";
    for (const char* library : {"ltreg_throws_own", "ltreg_throws_standard"}) {
      finds(5, "X", libraryPath(library), throws + ": thrown; look at its static objects");
    }
    finds(5, "X", libraryPath("ltreg_throws_number"), throws + " what is no std::exception; look");
    finds(5, "X", libraryPath("component_throws_unguarded"),
          throws + ": from a static object; look");
    finds(5, "X", libraryPath("ltreg_needs_lacking"),
          "libltreg_lacking.so', which '" + libraryPath("ltreg_needs_lacking") +
              "' needs, needs the symbol '_Z15ltregTestAbsentv'");
    finds(5, "X", libraryPath("ltreg_needs_library"), "needs the library 'libltreg_absent");
    finds(5, "X", libraryPath("ltreg_needs_symbol"), "needs the symbol '_Z15ltregTestAbsentv'");
    finds(1, "X", "no such library.so", "the system finds no library 'no such library.so'");
  } else {
    finds(5, "X", libraryPath("ltreg_throws_number"), "an exception left its static objects");
  }
}

// The library keeps the stream open that it prints to, until the process ends that tries it out.
TEST_F(LtregComponents, ATrialEndsWithTheCheck) {
  m_folder.write(kStore, entryOf("X", libraryPath("ltreg_hangs")));
  const auto [printed, errors] = makePipe();
  const Process check({m_program,
                       {"component", "check", "X", "--timeout", "86400"},
                       m_folder.path(),
                       std::fopen(m_folder.write("input", "").c_str(), "r"),
                       std::fopen(m_folder.path("output").c_str(), "w"),
                       errors});
  EXPECT_EQ(std::fgetc(printed), 'h');
  check.kill();
  while (std::fgetc(printed) != EOF) {
  }
  std::fclose(printed);
}

// The process that tries a library out ends even when nobody is left to end it.
TEST_F(LtregComponents, ATrialHasATimeOfItsOwn) {
  m_folder.write(kStore, entryOf("X", libraryPath("ltreg_hangs")));
  const ProgramResult result = run("component probe X --timeout 1");
  EXPECT_LT(result.exitCode, 0) << result.errors;
  contains(result.output, {"loading"});
}

// The program that runs is no longer there when it starts its child; what bears the name that the
// system then gives it comes in its place.
TEST_F(LtregComponents, BlamesNoLibraryThatWasNotTried) {
  if (kOnWindows) {
    GTEST_SKIP() << "a program that runs cannot be removed there";
  }
  m_folder.write(kStore, entryOf("X", "library.so"));
  EXPECT_EQ(run("component list").exitCode, 0);
  LTLib::NamedMutex mutex(readFile(m_folder.path("qsconfig.dat")).c_str());
  const std::filesystem::path program = m_folder.path("bin/tool");
  std::filesystem::create_directory(program.parent_path());
  std::filesystem::create_directory_symlink(std::filesystem::path(LTREG_PROGRAM).parent_path(),
                                            m_folder.path("lib"));
  for (const auto& [child, why] : std::vector<std::pair<std::string, std::string>>{
           {"no program", "since the system starts no child process: Exec format error"},
           {"#!/bin/sh\nkill -9 $$\n", "the child ended before that with signal 9"},
           {"#!/bin/sh\nexit 3\n", "the child's own message tells why"}}) {
    std::filesystem::copy_file(LTREG_PROGRAM, program);
    mutex.lock();
    RunningProgram check = start("component check X", program.string());
    std::filesystem::remove(program);
    std::filesystem::permissions(m_folder.write("bin/tool (deleted)", child),
                                 std::filesystem::perms::owner_all);
    mutex.unlock();
    const ProgramResult result = check.wait();
    EXPECT_EQ(result.exitCode, 4) << result.output;
    contains(result.errors, {"the library was not tried", why});
  }
}

TEST_F(LtregComponents, CreatesWhenAsked) {
  const std::string library = libraryPath("component_outcomes");
  const auto ends = [&](int exitCode, const std::string& outcome, const std::string& verdict) {
    finds(exitCode, "Outcome." + outcome, library, verdict, "--create");
  };
  ends(5, "Refuses", "the factory fails with 0x80004005\n");
  ends(5, "StoresNothing", "the factory reports success and gives no object\n");
  ends(5, "Plain", "the class is of the plain form, and '--create' makes components alone\n");
  ends(5, "ThrowsOwn", "the factory throws: own exception\n");
  ends(5, "ThrowsStandard", "the factory throws: standard exception\n");
  ends(5, "ThrowsNumber", "the factory throws what is no std::exception\n");
  ends(5, "InitFails", "Init fails with 0x80360001\n");
  ends(5, "InitThrows", "Init throws: from Init\n");
  ends(0, "Good", "offers the class as a component, and an object was made and released\n");
  ends(0, "Positive", "offers the class as a component, and an object was made and released\n");
  finds(0, "Outcome.Refuses", library, "loads and offers the class as a component\n",
        "--backend file");
}

TEST_F(LtregComponents, TellsWhatALibraryOffersInstead) {
  const std::string pair = libraryPath("component_pair");
  m_folder.write("s.cfg", entryOf("Pair.Unknow", pair) + entryOf("Pair.Plain", pair) +
                              entryOf("Other", "other") + entryOf("Pair.Unknown", pair));
  fails(5, "component check Pair.Unknow --store s.cfg", "", {},
        "Pair.Unknow: '" + pair +
            "' loads, but has no registrar for the class; of the registered classes it offers"
            " 'Pair.Plain', 'Pair.Unknown'\n");
}

}  // namespace
