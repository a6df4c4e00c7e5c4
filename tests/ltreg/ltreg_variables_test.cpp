// References in keys, and what the tool shows of variables and expansions.
#include "tests/ltreg/ltreg_fixture.h"

namespace {

using LTLib::Testing::LtregCase;
using LTLib::Testing::ProgramResult;
using LTLib::Testing::ScopedEnvironment;
using LTLib::Testing::Words;

constexpr char kShared[] = "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared";
constexpr char kBroken[] = "[]\n";

// A store with public variables and a value to look for.
std::string withVariables() {
  return std::string("[") + kShared +
         "\\PublicVars]\n"
         "\"Where\"=string:\"A\\%Leaf%\"\n\"Leaf\"=string:\"B\"\n\"None\"=string:\"\"\n"
         "\"Slash\"=string:\"\\B\"\n\"One\"=string:\"%Two%\"\n\"Two\"=string:\"x%One%\"\n"
         "\"Self\"=string:\"Self\"\n\"CompanyName\"=string:\"not taken\"\n\n"
         "[A\\B]\n\"n\"=ulong:1\n\n";
}

class LtregVariables : public LTLib::Testing::LtregTest {};

TEST_F(LtregVariables, KeysTakeReferences) {
  const std::string text = withVariables();
  const std::string gone = text.substr(0, text.find("[A\\B]"));
  for (const LtregCase& row : std::vector<LtregCase>{
           {{"get", "HKLM\\%Where%", "n"}, 0, "1\n", "", text},
           {{"get", "HKLM\\A\\%Leaf%\\", "n"}, 0, "1\n", "", text},
           {{"list", "hklm\\%None%A\\B"}, 0, "ulong\tn\t1\n", "", text},
           {{"get", "HKLM\\%SharedRoot%\\PublicVars", "Leaf"}, 0, "B\n", "", text},
           {{"tree", "HKLM\\%Where%"}, 0, "HKEY_LOCAL_MACHINE\\A\\B\n\tulong\tn\t1\n", "", text},
           {{"set", "HKLM\\%Where%", "n", "2"},
            0,
            "",
            "",
            text,
            gone + "[A\\B]\n\"n\"=ulong:2\n\n"},
           {{"delete", "HKLM\\%Where%"}, 0, "", "", text, gone},
           {{"get", "HKLM\\%Nope%", "n"}, 3, "", "the variable 'Nope' is not defined", text},
           {{"get", "HKLM\\%Where%\\%Nope%", "n"}, 3, "", "the text so far: 'A\\B\\%Nope%'", text},
           {{"get", "HKLM\\A%", "n"}, 3, "", "a percent sign has no partner", text},
           {{"get", "HKLM\\%Slash%", "n"}, 3, "", "'\\B' has an empty component", text},
           {{"get", "HKLM\\A\\%Slash%", "n"}, 3, "", "'A\\\\B' has an empty component", text},
           {{"delete", "HKLM\\%None%", "-r"}, 3, "", "a root cannot be deleted", text},
           {{"get", "HKLM\\%Where%", "n"}, 4, "", "does not load", kBroken},
           {{"get", "HKCU\\%Where%", "n"}, 4, "", "the public variables cannot be read", kBroken},
           {{"list", "HKCU\\A\\B"}, 1, "", "HKEY_CURRENT_USER.cfg", kBroken},
       }) {
    check(row);
  }
}

// The first expansion already reads the store that the option names, and for another root's key
// the machine root's.
TEST_F(LtregVariables, ReferencesComeFromTheStoreInPlay) {
  m_folder.write("s.cfg", withVariables());
  m_folder.write("users.cfg", "[A\\B]\n\"n\"=ulong:7\n\n");
  EXPECT_EQ(run({"get", "HKLM\\%Where%", "n", "--store", "s.cfg"}).output, "1\n");
  EXPECT_EQ(run({"expand", "%Where%", "--store", "s.cfg"}).output, "A\\B\n");
  EXPECT_EQ(run({"get", "HKU\\%Where%", "n", "--store", "users.cfg"}).exitCode, 3);
  const ScopedEnvironment machine("HKEY_LOCAL_MACHINE", m_folder.path("s.cfg"));
  EXPECT_EQ(run({"get", "HKU\\%Where%", "n", "--store", "users.cfg"}).output, "7\n");
  const ScopedEnvironment nothing("HKEY_LOCAL_MACHINE", "");
  EXPECT_EQ(run({"expand", "%CurrentConfig%"}).output, "default\n");
}

TEST_F(LtregVariables, Expands) {
  const std::string text = withVariables();
  for (const LtregCase& row : std::vector<LtregCase>{
           {{"expand", "%SharedRoot%"}, 0, std::string(kShared) + "\n", "", {}},
           {{"expand", "no reference"}, 0, "no reference\n", "", text},
           {{"expand", ""}, 0, "\n", "", text},
           {{"expand", "<%Where%>"}, 0, "<A\\B>\n", "", text},
           {{"expand", "<%Where%>", "--trace"},
            0,
            "Where\tA\\%Leaf%\t<A\\%Leaf%>\nLeaf\tB\t<A\\B>\n<A\\B>\n",
            "",
            text},
           {{"expand", "%Where%%Nope%", "--trace"},
            3,
            "Where\tA\\%Leaf%\tA\\%Leaf%%Nope%\nLeaf\tB\tA\\B%Nope%\n",
            "the variable 'Nope' is not defined",
            text},
           {{"expand", "%where%"}, 3, "", "'where' is not defined", text},
           {{"expand", "%%"}, 3, "", "the variable '' is not defined", text},
           {{"expand", "%Leaf% 5%"}, 3, "", "no partner; write", text},
           {{"expand", "%Leaf%%One%"}, 3, "", "'%One%' leads back to itself", text},
           {{"expand", "%One%"}, 3, "", "the text so far: 'x%One%'", text},
           {{"expand", "%Self%"}, 3, "", "'%Self%' leads back to itself", text},
           {{"expand", "x"}, 4, "", "the public variables cannot be read", kBroken},
           {{"vars"}, 4, "", "the public variables cannot be read", kBroken},
       }) {
    check(row);
  }
}

TEST_F(LtregVariables, ShowsVariables) {
  m_folder.write(kStore, withVariables());
  const ProgramResult lines = run({"vars"});
  EXPECT_EQ(lines.exitCode, 0);
  for (const std::string& line : {
           std::string("CompanyName\tTarn Quillmere\tTarn Quillmere\tdefault\n"),
           std::string("SharedRoot\t%QSRoot%\\Shared\t") + kShared + "\tdefault\n",
           std::string("Where\tA\\%Leaf%\tA\\B\tpublic\n"),
           std::string("None\t\t\tpublic\n"),
           std::string("One\t%Two%\t\tpublic\n"),
       }) {
    EXPECT_NE(('\n' + lines.output).find('\n' + line), std::string::npos) << line << lines.output;
  }
  EXPECT_NE(lines.errors.find("warning: the variable 'One': '%Two%'"), std::string::npos)
      << lines.errors;
  const std::string json = run({"vars", "--json"}).output;
  for (const char* part : {"\"name\": \"Where\",\n    \"value\": \"A\\\\%Leaf%\",\n"
                           "    \"expanded\": \"A\\\\B\",\n    \"origin\": \"public\"\n",
                           "\"value\": \"%Two%\",\n    \"expanded\": null,"}) {
    EXPECT_NE(json.find(part), std::string::npos) << part << json;
  }
}

}  // namespace
