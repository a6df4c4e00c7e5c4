// What the first expansion of a process brings in, in a new process for each case, over the shared
// library with its files beside it.
#include <cstdio>
#include <thread>

#include "tests/registry/copied_program.h"
#include "tests/support/child_process.h"
#include "tests/support/latch.h"

namespace {

using namespace std::string_literals;
using LTLib::Testing::CopiedProgram;
using LTLib::Testing::Scenario;
using LTLib::Testing::tellParent;

using Lines = std::vector<std::string>;

QSConfigVariableManager& manager() {
  return *QSConfigVariableManager::GetInstance();
}

std::string resultText(QSResult result) {
  char text[16];
  std::snprintf(text, sizeof text, "%08X", static_cast<unsigned int>(result));
  return result == 0 ? "0" : text;
}

// The third row bears the name of a public variable of the tests.
QSREGISTRYVARIABLE s_table[] = {
    {"First", "1"}, {"Second", "2"}, {"Public", "mine"}, {"Fourth", "4"}, {nullptr, nullptr}};

std::string expanded(std::string text) {
  try {
    const QSResult result = QSExpandString(text);
    return resultText(result) + ' ' + text;
  } catch (const QSException& error) {
    return "threw " + resultText(error.Result()) + ' ' + error.What();
  }
}

// One line of a script: a word for the operation, a name, and whatever follows.
std::string perform(const std::string& line) {
  const std::size_t colon = std::min(line.find(':'), line.size());
  const std::string word = line.substr(0, colon);
  const std::string rest = line.substr(std::min(colon + 1, line.size()));
  const std::size_t equals = std::min(rest.find('='), rest.size());
  const std::string name = rest.substr(0, equals);
  const std::string text = rest.substr(std::min(equals + 1, rest.size()));
  if (word == "expand") {
    return expanded(rest);
  }
  if (word == "set") {
    return resultText(manager().SetVariable(name, text));
  }
  if (word == "add") {
    return resultText(manager().AddVariable(name, text));
  }
  if (word == "remove") {
    return resultText(manager().RemoveVariable(name));
  }
  if (word == "table") {
    return resultText(manager().AddVariables(s_table));
  }
  if (word == "write") {
    CQSRegValue value(REG_ROOT_LOCAL_MACHINE, "%PublicVariables%", name.c_str());
    return resultText(value.Write(text.c_str()));
  }
  bool defined = false;
  const QSResult result = manager().IsVariableDefined(rest, defined);
  return resultText(result) + (defined ? " yes" : " no");
}

const Scenario s_script("script", [](const Lines& arguments) {
  for (const std::string& line : arguments) {
    tellParent(perform(line));
  }
  return 0;
});

constexpr char kPublicKey[] =
    "[Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared\\PublicVars]\n";

class FirstUseLoad : public testing::Test {
 protected:
  void publicVariables(const std::string& lines) const {
    m_program.stores().folder().write("HKEY_LOCAL_MACHINE.cfg", kPublicKey + lines);
  }

  Lines script(const Lines& lines) const { return m_program.play("script", lines); }

  CopiedProgram m_program;
};

TEST_F(FirstUseLoad, ConfigFileNamesTheConfiguration) {
  const std::string longWord(100000, 'w');
  const std::pair<std::string, std::string> cases[] = {
      {"one", "one"},
      {"one\n", "one"},
      {" \t\r\n\v\f two  words ", "two"},
      {"", ""},
      {" \r\n\t ", ""},
      {"a\0b c"s, "a"},
      {"\0a"s, ""},
      {longWord, longWord},
      {"%CompanyName%", "Tarn Quillmere"},
      {"\xC3\xA4", "\xC3\xA4"},
      {"\x1F|x", "\x1F|x"},
  };
  const Lines lines = {"expand:plain", "expand:%CurrentConfig%"};
  EXPECT_EQ(script(lines), (Lines{"0 plain", "0 default"})) << "no file";
  for (const auto& [content, word] : cases) {
    m_program.write("config.dat", content);
    EXPECT_EQ(script(lines), (Lines{"0 plain", "0 " + word})) << content.substr(0, 20);
  }
}

TEST_F(FirstUseLoad, TheProgramComesBeforeTheConfigFile) {
  m_program.write("config.dat", "filed");
  const std::pair<Lines, Lines> cases[] = {
      {{"set:CurrentConfig=mine", "expand:%CurrentConfig%"}, {"0", "0 mine"}},
      {{"expand:", "set:CurrentConfig=mine", "expand:%ClientRoot%"},
       {"0 ", "0", "0 Software\\Tarn Quillmere\\Suite RZ 7.0\\mine\\Quillmere"}},
      // Only the variable of exactly that name counts.
      {{"add:currentconfig=x", "set:currentconfig=y", "expand:%CurrentConfig%"},
       {"0", "0", "0 filed"}},
      {{"remove:CurrentConfig", "expand:%CurrentConfig%"}, {"0", "80004005 %CurrentConfig%"}},
      {{"defined:CurrentConfig", "add:CurrentConfig=x", "expand:%CurrentConfig%"},
       {"0 yes", "80360001", "0 filed"}},
  };
  for (const auto& [lines, answers] : cases) {
    EXPECT_EQ(script(lines), answers) << lines.front();
  }
}

TEST_F(FirstUseLoad, PublicVariablesComeInAtTheFirstExpansion) {
  publicVariables(
      "\"Public\"=string:\"from the registry\"\n"
      "\"CompanyName\"=string:\"never\"\n"
      "\"Mine\"=string:\"never\"\n"
      "\"odd%name\"=string:\"never\"\n"
      "\"Number\"=ulong:5\n"
      "\"Bytes\"=binary:abc\n"
      "\"List\"=liststring:\"a\"\n"
      "\"Folder\"=dir:\"C:\\x\"\n"
      "\"Empty\"=string:\"\"\n"
      "\"Nested\"=string:\"<%Public%>\"\n");
  const std::pair<Lines, Lines> cases[] = {
      {{"expand:%Public%"}, {"0 from the registry"}},
      {{"expand:%Nested%%Empty%%Folder%"}, {"0 <from the registry>C:\\x"}},
      {{"expand:%CompanyName%"}, {"0 Tarn Quillmere"}},
      {{"add:Mine=own", "expand:%Mine%"}, {"0", "0 own"}},
      {{"defined:Public", "expand:", "defined:Public"}, {"0 no", "0 ", "0 yes"}},
      {{"expand:plain", "defined:Number", "defined:Bytes", "defined:List", "defined:odd%name"},
       {"0 plain", "0 no", "0 no", "0 no", "0 no"}},
      {{"set:Public=x", "remove:Public", "expand:%Public%"},
       {"80360002", "80360002", "0 from the registry"}},
      {{"expand:", "set:Public=x", "expand:%Public%", "remove:Public", "expand:%Public%"},
       {"0 ", "0", "0 x", "0", "80004005 %Public%"}},
      {{"expand:", "table:", "expand:%First%%Second%", "defined:Fourth", "expand:%Public%"},
       {"0 ", "80360001", "0 12", "0 no", "0 from the registry"}},
      {{"table:", "expand:%First%%Second%%Public%%Fourth%"}, {"0", "0 12mine4"}},
      // The registry is not read again, whatever changes.
      {{"expand:", "write:Later=x", "set:CurrentConfig=default", "expand:%Later%"},
       {"0 ", "0", "0", "80004005 %Later%"}},
      // The key of the public variables lies below the configuration.
      {{"set:CurrentConfig=other", "expand:%Public%"}, {"0", "80004005 %Public%"}},
      {{"remove:PublicVariables", "expand:%Public%"}, {"0", "80004005 %Public%"}},
  };
  for (const auto& [lines, answers] : cases) {
    EXPECT_EQ(script(lines), answers) << lines.front();
  }
}

TEST_F(FirstUseLoad, ALoadThatThrowsIsNeverTriedAgain) {
  publicVariables("\"Public\"=string:\"x\"\n\"Bad\"=string:\"never closed\n");
  const Lines answers = script({"expand:%CompanyName%", "expand:%CompanyName%", "defined:Public",
                                "expand:%Public%", "add:New=n", "expand:%New%"});
  ASSERT_EQ(answers.size(), 6u);
  EXPECT_EQ(answers[0], "threw 80004005 registry read failed");
  EXPECT_EQ((Lines{answers.begin() + 1, answers.end()}),
            (Lines{"0 Tarn Quillmere", "0 no", "80004005 %Public%", "0", "0 n"}));
}

// Tells each replacement, and whether the public variable is there yet.
class Telling : public QSVariableResolver {
 public:
  QSResult Resolve(const std::string& name, const std::string& value,
                   std::string& /*replacement*/) override {
    bool defined = false;
    (void)manager().IsVariableDefined("Public", defined);
    tellParent(name + '=' + value + (defined ? " +" : ""));
    return 0;
  }
};

const Scenario s_road("road", [](const Lines&) {
  static Telling resolver;
  (void)manager().AddResolver(&resolver);
  CQSRegValue value(REG_ROOT_LOCAL_MACHINE, "%CLASSID%\\{id}", "InprocServer");
  tellParent(value.GetPath());
  char* text = nullptr;
  const QSResult result = value.Read(text);
  tellParent(resultText(result) + ' ' + (result == 0 ? text : ""));
  tellParent(expanded("%Public%"));
  return 0;
});

// config.dat, then the key of the public variables, then these, and the text at last.
TEST_F(FirstUseLoad, TheStepsOfOneRequest) {
  m_program.write("config.dat", "site");
  m_program.stores().folder().write(
      "HKEY_LOCAL_MACHINE.cfg",
      "[Software\\Tarn Quillmere\\Suite RZ 7.0\\site\\Shared\\PublicVars]\n"
      "\"Public\"=string:\"p\"\n"
      "[Software\\Tarn Quillmere\\Suite RZ 7.0\\site\\Shared\\CLASSID\\{id}]\n"
      "\"InprocServer\"=string:\"library\"\n");
  const Lines root = {"SharedRoot=%QSRoot%\\Shared",
                      "QSRoot=%CompanyRoot%\\Suite %DesktopVersion%\\%CurrentConfig%",
                      "CompanyRoot=Software\\%CompanyName%",
                      "CompanyName=Tarn Quillmere",
                      "DesktopVersion=RZ 7.0",
                      "CurrentConfig=site"};
  Lines expected = {"PublicVariables=%SharedRoot%\\PublicVars"};
  expected.insert(expected.end(), root.begin(), root.end());
  expected.emplace_back("CLASSID=%SharedRoot%\\CLASSID +");
  for (const std::string& line : root) {
    expected.push_back(line + " +");
  }
  for (const char* line : {"Software\\Tarn Quillmere\\Suite RZ 7.0\\site\\Shared\\CLASSID\\{id}",
                           "0 library", "Public=p +", "0 p"}) {
    expected.emplace_back(line);
  }
  EXPECT_EQ(m_program.play("road"), expected);
}

// Holds the one thread that loads until all others have expanded.
class Holding : public QSVariableResolver {
 public:
  explicit Holding(int others) : m_inside(1), m_others(others) {}

  QSResult Resolve(const std::string& name, const std::string& /*value*/,
                   std::string& /*replacement*/) override {
    if (name == "PublicVariables") {
      m_inside.count_down();
      m_others.wait();
    }
    return -1;
  }

  LTLib::Testing::Latch m_inside;
  LTLib::Testing::Latch m_others;
};

const Scenario s_held("held", [](const Lines&) {
  constexpr int kOthers = 7;
  static Holding resolver(kOthers);
  (void)manager().AddResolver(&resolver);
  std::vector<std::thread> threads;
  Lines answers(kOthers + 1);
  threads.emplace_back([&answers] { answers[kOthers] = expanded("%Public%"); });
  for (int other = 0; other < kOthers; ++other) {
    threads.emplace_back([&answers, other] {
      resolver.m_inside.wait();
      answers[static_cast<std::size_t>(other)] = expanded("%CompanyName%%Public%");
      resolver.m_others.count_down();
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const std::string& answer : answers) {
    tellParent(answer);
  }
  tellParent(expanded("%Public%"));
  return 0;
});

TEST_F(FirstUseLoad, NobodyWaitsForTheThreadThatLoads) {
  publicVariables("\"Public\"=string:\"p\"\n");
  Lines expected(7, "80004005 Tarn Quillmere%Public%");
  expected.insert(expected.end(), 2, "0 p");
  EXPECT_EQ(m_program.play("held"), expected);
}

const Scenario s_race("race", [](const Lines&) {
  constexpr int kThreads = 8;
  LTLib::Testing::Latch start(kThreads);
  Lines answers(kThreads);
  std::vector<std::thread> threads;
  for (std::string& answer : answers) {
    threads.emplace_back([&answer, &start] {
      start.arrive_and_wait();
      answer = expanded("%CompanyName%%Public%");
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const std::string& answer : answers) {
    tellParent(answer);
  }
  tellParent(expanded("%Public%"));
  return 0;
});

// Whoever comes while another one loads sees the table as it is by then, and never half a variable.
TEST_F(FirstUseLoad, EightThreadsMakeTheFirstExpansionTogether) {
  m_program.write("config.dat", "default");
  std::string lines = "\"Public\"=string:\"p\"\n";
  for (int i = 0; i < 200; ++i) {
    lines += "\"More " + std::to_string(i) + "\"=string:\"m\"\n";
  }
  publicVariables(lines);
  const Lines answers = m_program.play("race");
  ASSERT_EQ(answers.size(), 9u);
  for (const std::string& answer : answers) {
    EXPECT_TRUE(answer == "0 Tarn Quillmerep" || answer == "0 p" ||
                answer == "80004005 Tarn Quillmere%Public%")
        << answer;
  }
  EXPECT_EQ(answers.back(), "0 p");
}

}  // namespace
