// What the manual and the read-me file say, tried out: their commands, and what these write.
#include <sstream>

#include "tests/ltreg/ltreg_fixture.h"
#include "tests/support/system.h"

namespace {

using namespace LTLib::Testing;

constexpr char kIndent[] = "    ";
constexpr std::string_view kOthers = "...\n";

class LtregManual : public LtregTest {
 protected:
  void SetUp() override {
    if (kOnWindows) {
      GTEST_SKIP() << "it takes a shell";
    }
  }

  // What a shell makes of the line, with the exit code of its last command.
  [[nodiscard]] ProgramResult shell(const std::string& line) const {
    const std::string tool = std::filesystem::path(m_program).parent_path().string();
    return RunningProgram("/bin/bash", {"-c", "PATH=" + tool + ":$PATH; exec 2>&1; " + line},
                          m_folder.path())
        .wait();
  }

  // A file that is shown is the one to go on with. Dots in a line of their own stand for any others.
  void shows(const std::string& line, const std::string& output) const {
    if (line.starts_with("cat ")) {
      m_folder.write(line.substr(4), output);
      return;
    }
    const std::string written = shell(line).output;
    std::size_t at = 0;
    for (std::size_t start = 0; start < output.size();) {
      const std::size_t end = std::min(output.find(kOthers, start), output.size());
      const std::string part = output.substr(start, end - start);
      const std::size_t found = written.find(part, at);
      EXPECT_TRUE(start == 0 ? found == 0 : found != std::string::npos) << line << "\n"
                                                                        << part << "\nin\n"
                                                                        << written;
      at = found + part.size();
      start = end + kOthers.size();
    }
    EXPECT_TRUE(at == written.size() || output.ends_with(kOthers)) << line << '\n' << written;
  }

  void does(const std::string& line) const {
    const ProgramResult result = shell(line);
    EXPECT_LE(result.exitCode, 1) << line << '\n' << result.output;
  }

  // A line of the synopsis: its verb, and each option.
  void knows(const std::string& synopsis) const {
    std::istringstream words(synopsis);
    std::string verb;
    std::string word;
    for (words >> word; words >> word && std::islower(word[0]) != 0 && word != "bash|zsh|fish";) {
      verb += ' ' + word;
    }
    const std::string help = shell("ltreg help" + verb).output;
    for (std::size_t at = synopsis.find("--"); at < synopsis.find("   ");
         at = synopsis.find("--", at + 2)) {
      contains(help, {synopsis.substr(at, synopsis.find_first_of("]| ", at) - at)});
    }
  }

  // The blocks of a page: a command and its output, or a line that begins with the tool's name; and
  // the commands of a table.
  template <class Line>
  void read(const std::string& page, Line line) const {
    std::istringstream lines(readFile(LTLIB_SOURCES "/" + page) + "\nend\n");
    std::string command;
    std::string output;
    for (std::string each; std::getline(lines, each);) {
      const bool isIndented = each.starts_with(kIndent);
      const std::string text = isIndented ? each.substr(4) : each;
      const bool isCommand = isIndented && text.starts_with("$ ");
      if (!command.empty() && (isCommand || !(isIndented || each.empty()))) {
        output.erase(output.find_last_not_of('\n') + 1);
        shows(std::exchange(command, ""), output.empty() ? output : output + '\n');
        output.clear();
      }
      if (isCommand) {
        command = text.substr(2);
      } else if (!command.empty()) {
        output += text + '\n';
      } else if (isIndented && text.starts_with("ltreg ")) {
        line(text);
      } else if (each.starts_with("| ")) {
        for (std::size_t at = each.find("`ltreg "); at < each.size();
             at = each.find("`ltreg ", at)) {
          const std::size_t end = each.find('`', at + 1);
          does(each.substr(at + 1, end - at - 1));
          at = end + 1;
        }
      }
    }
  }
};

TEST_F(LtregManual, CommandsWriteWhatItSays) {
  read("docs/ltreg.md", [&](const std::string& synopsis) { knows(synopsis); });
  const std::string page = readFile(LTLIB_SOURCES "/docs/ltreg.md");
  std::istringstream lines(run("manual").output);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(".SS ")) {
      contains(page, {"\n    ltreg " + line.substr(4, line.find_first_of(" \n", 4) - 4)});
    }
  }
}

TEST_F(LtregManual, TheReadMeFileTells) {
  m_folder.write(kStore, "[Software\\Demo]\n\"Title\"=string:\"Hello, world\"\n\n");
  read("README.md", [&](const std::string& text) { does(text.substr(0, text.find("  "))); });
}

}  // namespace
