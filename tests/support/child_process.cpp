#include "tests/support/child_process.h"

#include <gtest/gtest.h>

#include <iostream>
#include <map>
#include <tuple>

namespace LTLib::Testing {
namespace {

// Ahead of a line that is meant for the parent.
constexpr char kMark = '\1';

std::string s_program;

std::map<std::string, ScenarioFunction>& scenarios() {
  static std::map<std::string, ScenarioFunction> known;
  return known;
}

}  // namespace

Scenario::Scenario(const char* name, ScenarioFunction function) {
  scenarios()[name] = function;
}

void tellParent(const std::string& line) {
  std::cout << kMark << line << std::endl;
}

std::string hearParent() {
  std::string line;
  std::getline(std::cin, line);
  return line;
}

std::string thisProgram() {
  return s_program;
}

ChildProcess::ChildProcess(const std::string& scenario, std::vector<std::string> arguments,
                           const std::string& program) {
  std::FILE* input = nullptr;
  std::FILE* output = nullptr;
  std::tie(input, m_toChild) = makePipe();
  std::tie(m_fromChild, output) = makePipe();
  arguments.insert(arguments.begin(), "--scenario=" + scenario);
  m_process = std::make_unique<Process>(Start{program, std::move(arguments), ".", input, output});
}

ChildProcess::~ChildProcess() {
  m_process.reset();
  std::fclose(m_fromChild);
  std::fclose(m_toChild);
}

std::string ChildProcess::hear() {
  std::string line;
  for (int byte = std::fgetc(m_fromChild); byte != EOF; byte = std::fgetc(m_fromChild)) {
    if (byte != '\n') {
      line += static_cast<char>(byte);
    } else if (const std::size_t mark = line.find(kMark); mark != line.npos) {
      std::cout << line.substr(0, mark);
      return line.substr(mark + 1);
    } else {
      std::cout << std::exchange(line, {}) << std::endl;
    }
  }
  return {};
}

void ChildProcess::tell(const std::string& line) {
  std::fputs((line + '\n').c_str(), m_toChild);
  std::fflush(m_toChild);
}

// Files take what the program writes, so that no pipe fills up while nobody reads.
RunningProgram::RunningProgram(const std::string& program, std::vector<std::string> arguments,
                               const std::string& folder)
    : m_written(std::make_unique<TempFolder>()),
      m_process({program, std::move(arguments), folder,
                 std::fopen(m_written->write("input", "").c_str(), "r"),
                 std::fopen(m_written->path("output").c_str(), "w"),
                 std::fopen(m_written->path("errors").c_str(), "w")}) {}

ProgramResult RunningProgram::wait() {
  const int exitCode = m_process.wait();
  return {exitCode, readFile(m_written->path("output")), readFile(m_written->path("errors"))};
}

}  // namespace LTLib::Testing

// Plays the scenario that the first argument names, or runs the tests.
int main(int count, char** words) {
  using namespace LTLib::Testing;
  s_program = std::filesystem::absolute(words[0]).string();
  const std::string option = "--scenario=";
  const std::string first = count > 1 ? words[1] : "";
  if (first.starts_with(option)) {
    return scenarios().at(first.substr(option.size()))({words + 2, words + count});
  }
  testing::InitGoogleTest(&count, words);
  return RUN_ALL_TESTS();
}
