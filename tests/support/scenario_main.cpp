#include <gtest/gtest.h>

#include <map>

#include "tests/support/child_process.h"

namespace LTLib::Testing {
namespace {

std::map<std::string, ScenarioFunction>& scenarios() {
  static std::map<std::string, ScenarioFunction> known;
  return known;
}

}  // namespace

Scenario::Scenario(const char* name, ScenarioFunction function) {
  scenarios()[name] = function;
}

}  // namespace LTLib::Testing

// Plays the scenario that the first argument names, or runs the tests.
int main(int count, char** words) {
  const std::string option = "--scenario=";
  const std::string first = count > 1 ? words[1] : "";
  if (first.rfind(option, 0) == 0) {
    return LTLib::Testing::scenarios().at(first.substr(option.size()))({words + 2, words + count});
  }
  testing::InitGoogleTest(&count, words);
  return RUN_ALL_TESTS();
}
