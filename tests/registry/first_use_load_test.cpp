// What the first expansion of a process brings in, in a new process for each case, over the shared
// library with its files beside it.
#include <filesystem>

#include "tests/registry/registry_fixture.h"
#include "tests/support/child_process.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace LTLib::Testing;

// One line of a script: a word for the operation, a colon, and a name or a text.
std::string perform(const std::string& line) {
  QSConfigVariableManager& manager = *QSConfigVariableManager::GetInstance();
  const std::string word = line.substr(0, line.find(':'));
  std::string rest = line.substr(line.find(':') + 1);
  if (word == "expand") {
    const QSResult result = QSExpandString(rest);
    return (result == 0 ? "" : codeOf(result) + ' ') + rest;
  }
  return codeOf(word == "set"      ? manager.SetVariable(rest, "set")
                : word == "remove" ? manager.RemoveVariable(rest)
                                   : manager.AddVariable(rest, "added"));
}

const Scenario s_script("script", [](const Names& arguments) {
  for (const std::string& line : arguments) {
    tellParent(perform(line));
  }
  return 0;
});

const std::string kDone = codeOf(0);
const std::string kFailed = codeOf(LTLib::kFailure);

// This test program in a folder of its own, with the libraries and the marker of the file backend
// beside it, and with the tests' stores.
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
    (void)stores();
  }

  // The answers to a script, and a last one if it did not end well.
  [[nodiscard]] Names play(const Names& script) const {
    ChildProcess child("script", script, m_program);
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
      {" \r\n\t ", ""},      // white space alone
      {"a\0b c"s, "a"},      // a zero byte ends it
      {longWord, longWord},  // the longest
      {longWord + 'w', "default"},
  };
  const Names lines = {"expand:plain", "expand:<%CurrentConfig%>"};
  EXPECT_EQ(play(lines), (Names{"plain", "<default>"})) << "no file";
  for (const auto& [content, word] : cases) {
    m_folder.write("config.dat", content);
    EXPECT_EQ(play(lines), (Names{"plain", '<' + word + '>'})) << content.substr(0, 20);
  }
}

TEST_F(FirstUseLoad, BothSourcesComeInAtTheFirstExpansion) {
  m_folder.write("config.dat", "filed");
  stores().write("HKEY_LOCAL_MACHINE.cfg",
                 "[Software\\Tarn Quillmere\\Suite RZ 7.0\\filed\\Shared\\PublicVars]\n"
                 "\"Public\"=string:\"from the registry\"\n\"CompanyName\"=string:\"never\"\n"
                 "\"Mine\"=string:\"never\"\n\"Number\"=ulong:5\n\"List\"=liststring:\"a\"\n");
  const std::pair<Names, Names> cases[] = {
      {{"expand:%CurrentConfig%<%Public%>%CompanyName%"},
       {"filed<from the registry>Tarn Quillmere"}},
      {{"expand:plain", "expand:%Number%", "expand:%List%"},
       {"plain", kFailed + " %Number%", kFailed + " %List%"}},
      // The program comes before both.
      {{"set:CurrentConfig", "expand:%CurrentConfig%"}, {kDone, "set"}},
      {{"add:Mine", "expand:%Mine%"}, {kDone, "added"}},
      {{"expand:-", "set:Public", "expand:%Public%"}, {"-", kDone, "set"}},
      {{"remove:CurrentConfig", "expand:%CurrentConfig%"}, {kDone, kFailed + " %CurrentConfig%"}},
      {{"remove:PublicVariables", "expand:%Public%"}, {kDone, kFailed + " %Public%"}},
  };
  for (const auto& [lines, answers] : cases) {
    EXPECT_EQ(play(lines), answers);
  }
}

}  // namespace
