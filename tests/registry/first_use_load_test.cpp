// What the first expansion of a process brings in, in a new process for each case, over the shared
// library with its files beside it.
#include <filesystem>

#include "tests/registry/registry_fixture.h"
#include "tests/support/child_process.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace LTLib::Testing;

// The third row bears the name of a public variable of the tests.
QSREGISTRYVARIABLE s_table[] = {
    {"First", "1"}, {"Second", "2"}, {"Public", "mine"}, {"Fourth", "4"}, {nullptr, nullptr}};

std::string expanded(std::string text) {
  try {
    const QSResult result = QSExpandString(text);
    return (result == 0 ? "" : codeOf(result) + ' ') + text;
  } catch (const QSException& error) {
    return "threw " + codeOf(error.Result()) + ' ' + error.What();
  }
}

QSResult writePublic(const std::string& name) {
  return CQSRegValue(REG_ROOT_LOCAL_MACHINE, "%PublicVariables%", name.c_str()).Write("x");
}

// One line of a script: a word for the operation, a colon, and a name or a text.
std::string perform(const std::string& line) {
  QSConfigVariableManager& manager = *QSConfigVariableManager::GetInstance();
  const std::string word = line.substr(0, line.find(':'));
  const std::string rest = line.substr(line.find(':') + 1);
  if (word == "expand") {
    return expanded(rest);
  }
  if (word == "defined") {
    bool defined = false;
    (void)manager.IsVariableDefined(rest, defined);
    return defined ? "yes" : "no";
  }
  return codeOf(word == "set"      ? manager.SetVariable(rest, "set")
                : word == "add"    ? manager.AddVariable(rest, "added")
                : word == "remove" ? manager.RemoveVariable(rest)
                : word == "table"  ? manager.AddVariables(s_table)
                                   : writePublic(rest));
}

const Scenario s_script("script", [](const Names& arguments) {
  for (const std::string& line : arguments) {
    tellParent(perform(line));
  }
  return 0;
});

const std::string kDone = codeOf(0);
const std::string kFailed = codeOf(LTLib::kFailure);
const std::string kPresent = codeOf(LTLib::kAlreadyPresent);
const std::string kAbsent = codeOf(LTLib::kNotFound);

// This test program in a folder of its own, with the libraries and the marker of the file backend
// beside it.
class FirstUseLoad : public testing::Test {
 protected:
  FirstUseLoad() {
    const fs::path program = thisProgram();
    m_program = m_folder.path(program.filename().string());
    fs::copy_file(program, m_program);
    for (const fs::directory_entry& entry : fs::directory_iterator(program.parent_path())) {
      // A library's name may go on with its version.
      const std::string name = entry.path().filename().string();
      if (name.ends_with(".dll") || name.starts_with("libltlib.so") ||
          name.starts_with("liblttracer.so")) {
        fs::copy(entry.path(), m_folder.path(name), fs::copy_options::copy_symlinks);
      }
    }
    m_folder.write("registry.dat", "");
  }

  static void publicVariables(const std::string& lines,
                              const std::string& configuration = "default") {
    stores().write("HKEY_LOCAL_MACHINE.cfg", "[Software\\Tarn Quillmere\\Suite RZ 7.0\\" +
                                                 configuration + "\\Shared\\PublicVars]\n" + lines);
  }

  // The lines of a scenario, and a last one if it did not end well.
  [[nodiscard]] Names play(const std::string& scenario, const Names& arguments) const {
    ChildProcess child(scenario, arguments, m_program);
    Names lines;
    for (std::string line = child.hear(); !line.empty(); line = child.hear()) {
      lines.push_back(line);
    }
    if (const int code = child.wait(); code != 0) {
      lines.push_back("exit code " + std::to_string(code));
    }
    return lines;
  }

  const TempFolder m_folder;
  std::string m_program;
};

TEST_F(FirstUseLoad, ConfigFileNamesTheConfiguration) {
  const std::string longWord(512, 'w');
  const std::pair<std::string, std::string> cases[] = {
      {" \t\r\n\v\f two  words ", "two"},
      {"one", "one"},
      {"", ""},
      {" \r\n\t ", ""},
      {"a\0b c"s, "a"},
      {"\0a"s, ""},
      {longWord, longWord},
      {longWord + 'w', "default"},
      {"%CompanyName%", "Tarn Quillmere"},
      {"\xC3\xA4\x1F|x", "\xC3\xA4\x1F|x"},
  };
  const Names lines = {"expand:plain", "expand:<%CurrentConfig%>"};
  EXPECT_EQ(play("script", lines), (Names{"plain", "<default>"})) << "no file";
  for (const auto& [content, word] : cases) {
    m_folder.write("config.dat", content);
    EXPECT_EQ(play("script", lines), (Names{"plain", '<' + word + '>'})) << content.substr(0, 20);
  }
}

TEST_F(FirstUseLoad, BothSourcesComeInAtTheFirstExpansion) {
  m_folder.write("config.dat", "filed");
  publicVariables(
      "\"Public\"=string:\"from the registry\"\n\"CompanyName\"=string:\"never\"\n"
      "\"Mine\"=string:\"never\"\n\"odd%name\"=string:\"never\"\n\"Number\"=ulong:5\n"
      "\"Bytes\"=binary:abc\n\"List\"=liststring:\"a\"\n\"Folder\"=dir:\"C:\\x\"\n"
      "\"Empty\"=string:\"\"\n\"Nested\"=string:\"<%Public%>\"\n",
      "filed");
  const std::pair<Names, Names> cases[] = {
      {{"expand:%CurrentConfig%%Nested%%Empty%%Folder%"}, {"filed<from the registry>C:\\x"}},
      // The program comes before the file, and only the variable of exactly that name counts.
      {{"set:CurrentConfig", "expand:%CurrentConfig%", "defined:Public"}, {kDone, "set", "no"}},
      {{"expand:-", "set:CurrentConfig", "expand:%CurrentConfig%"}, {"-", kDone, "set"}},
      {{"add:currentconfig", "set:currentconfig", "expand:%CurrentConfig%"},
       {kDone, kDone, "filed"}},
      {{"remove:CurrentConfig", "expand:%CurrentConfig%"}, {kDone, kFailed + " %CurrentConfig%"}},
      {{"add:CurrentConfig", "expand:%CurrentConfig%"}, {kPresent, "filed"}},
      // And so with names that are public variables.
      {{"expand:%CompanyName%"}, {"Tarn Quillmere"}},
      {{"add:Mine", "expand:%Mine%"}, {kDone, "added"}},
      {{"expand:plain", "defined:Number", "defined:Bytes", "defined:List", "defined:odd%name"},
       {"plain", "no", "no", "no", "no"}},
      {{"defined:Public", "set:Public", "remove:Public", "expand:%Public%"},
       {"no", kAbsent, kAbsent, "from the registry"}},
      {{"expand:-", "set:Public", "expand:%Public%", "remove:Public", "expand:%Public%"},
       {"-", kDone, "set", kDone, kFailed + " %Public%"}},
      {{"expand:-", "table:", "expand:%First%%Second%", "defined:Fourth", "expand:%Public%"},
       {"-", kPresent, "12", "no", "from the registry"}},
      {{"table:", "expand:%First%%Second%%Public%%Fourth%"}, {kDone, "12mine4"}},
      // The registry is not read again, whatever changes.
      {{"expand:-", "write:Later", "set:CurrentConfig", "expand:%Later%"},
       {"-", kDone, kDone, kFailed + " %Later%"}},
      {{"remove:PublicVariables", "expand:%Public%"}, {kDone, kFailed + " %Public%"}},
  };
  for (const auto& [lines, answers] : cases) {
    EXPECT_EQ(play("script", lines), answers);
  }
}

TEST_F(FirstUseLoad, ALoadThatThrowsIsNeverTriedAgain) {
  publicVariables("\"Public\"=string:\"x\"\n\"Bad\"=string:\"never closed\n");
  EXPECT_EQ(play("script", {"expand:%CompanyName%", "expand:%CompanyName%", "expand:%Public%"}),
            (Names{"threw " + kFailed + " registry read failed", "Tarn Quillmere",
                   kFailed + " %Public%"}));
}

}  // namespace
