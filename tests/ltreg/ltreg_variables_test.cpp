// References in keys, and what the tool shows of variables and expansions.
#include "tests/ltreg/ltreg_fixture.h"

namespace {

using namespace LTLib::Testing;
constexpr char kBroken[] = "[]\n";
// Public variables, and a value to look for.
constexpr char kText[] =
    "[Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared\\PublicVars]\n"
    "\"Where\"=string:\"A\\%Leaf%\"\n\"Leaf\"=string:\"B\"\n\"None\"=string:\"\"\n"
    "\"Slash\"=string:\"\\B\"\n\"One\"=string:\"%Two%\"\n\"Two\"=string:\"x%One%\"\n"
    "\"CompanyName\"=string:\"not taken\"\n\n[A\\B]\n\"n\"=ulong:1\n\n";

class LtregVariables : public LtregTest {};

TEST_F(LtregVariables, KeysTakeReferences) {
  const std::string gone(kText, std::string_view(kText).find("[A\\B]"));
  shows(R"(get HKLM\A\%Leaf%\ n)", "1\n", kText);
  shows(R"(list hklm\%None%A\B)", "ulong\tn\t1\n", kText);
  changes(R"(set HKLM\%Where% n 2)", kText, gone + "[A\\B]\n\"n\"=ulong:2\n\n");
  changes(R"(delete HKLM\%Where%)", kText, gone);
  fails(3, R"(get HKLM\%Where%\%Nope% n)", "the text so far: 'A\\B\\%Nope%'", kText);
  fails(3, R"(get HKLM\%Slash% n)", "'\\B' has an empty component", kText);
  fails(3, R"(get HKLM\A\%Slash% n)", "'A\\\\B' has an empty component", kText);
  fails(3, R"(delete HKLM\%None% -r)", "a root cannot be deleted", kText);
  fails(4, R"(get HKLM\%Where% n)", "does not load", kBroken);
  fails(4, R"(get HKCU\%Where% n)", "the public variables cannot be read", kBroken);
  fails(1, R"(list HKCU\A\B)", "HKEY_CURRENT_USER.cfg", kBroken);
}

// The first expansion already reads the store that the option names, and for another root's key
// the machine root's.
TEST_F(LtregVariables, ReferencesComeFromTheStoreInPlay) {
  m_folder.write("s.cfg", kText);
  m_folder.write("users.cfg", "[A\\B]\n\"n\"=ulong:7\n\n");
  EXPECT_EQ(run(R"(get HKLM\%Where% n --store s.cfg)").output, "1\n");
  EXPECT_EQ(run("expand %Where% --store s.cfg").output, "A\\B\n");
  EXPECT_EQ(run(R"(get HKU\%Where% n --store users.cfg)").output, "");
  const ScopedEnvironment machine("HKEY_LOCAL_MACHINE", m_folder.path("s.cfg"));
  EXPECT_EQ(run(R"(get HKU\%Where% n --store users.cfg)").output, "7\n");
  const ScopedEnvironment nothing("HKEY_LOCAL_MACHINE", "");
  EXPECT_EQ(run("expand %CurrentConfig%").output, "default\n");
}

TEST_F(LtregVariables, Expands) {
  shows("expand ''", "\n", kText);
  shows("expand <%Where%>", "<A\\B>\n", kText);
  shows("expand <%Where%> --trace", "Where\tA\\%Leaf%\t<A\\%Leaf%>\nLeaf\tB\t<A\\B>\n<A\\B>\n",
        kText);
  fails(3, "expand %Where%%Nope% --trace", "the variable 'Nope' is not defined", kText,
        "Where\tA\\%Leaf%\tA\\%Leaf%%Nope%\nLeaf\tB\tA\\B%Nope%\n");
  fails(3, "expand %where%", "'where' is not defined", kText);
  fails(3, "expand '%Leaf% 5%'", "no partner; write", kText);
  fails(3, "expand %Leaf%%One%", "'%One%' leads back to itself", kText);
  fails(4, "expand x", "the public variables cannot be read", kBroken);
}

TEST_F(LtregVariables, ShowsVariables) {
  m_folder.write(kStore, kText);
  const ProgramResult lines = run("vars");
  const std::string all = '\n' + lines.output + lines.errors + run("vars --json").output;
  contains(
      all,
      {"\nCompanyName\tTarn Quillmere\tTarn Quillmere\tdefault\n", "\nNone\t\t\tpublic\n",
       "\nWhere\tA\\%Leaf%\tA\\B\tpublic\n", "\nOne\t%Two%\t\tpublic\n",
       "warning: the variable 'One': '%Two%'", "\"value\": \"%Two%\",\n      \"expanded\": null,",
       "\"name\": \"Where\",\n      \"value\": \"A\\\\%Leaf%\",\n      \"expanded\": \"A\\\\B\"",
       "\"origin\": \"public\""});
}

}  // namespace
