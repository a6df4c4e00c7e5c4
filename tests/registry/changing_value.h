// A value that others change between the queries of one read.
#ifndef LTLIB_TESTS_REGISTRY_CHANGING_VALUE_H
#define LTLIB_TESTS_REGISTRY_CHANGING_VALUE_H

#include "tests/registry/registry_fixture.h"

namespace LTLib::Testing {

struct Change {
  const char* label;
  std::vector<Form> forms;  // what each query finds, the last one for good
  std::string content;      // what a read gives
};

/// All begin with what is too large for a first guess at the room, but for the last, of which one
/// manager asks once and another twice.
inline std::vector<Change> changes(const std::string& numberOrBytes) {
  using namespace std::string_literals;
  const std::string first(600, 'f');
  const std::string large(60000, 'x');
  std::vector<Form> growing;
  for (std::size_t i = 0; i < 300; ++i) {
    growing.push_back({REG_BINARY, std::string(600 + 2 * i, 'g')});
  }
  return {
      {"bytes", {{REG_BINARY, first}, {REG_BINARY, large}}, "bytes:" + large},
      {"text", {{REG_SZ, first}, {REG_SZ, large + '\0'}}, "text:" + large},
      {"shorter text", {{REG_SZ, first}, {REG_SZ, "ab\0"s}}, "text:ab"},
      {"list", {{REG_MULTI_SZ, first}, {REG_MULTI_SZ, large + "\0b\0\0"s}}, "list:" + large + "|b"},
      {"text for bytes", {{REG_BINARY, first}, {REG_SZ, large + '\0'}}, "text:" + large},
      {"bytes for a text", {{REG_SZ, first}, {REG_BINARY, large}}, "bytes:" + large},
      {"number", {{REG_BINARY, first}, {REG_DWORD, "\5\0\0\0"s}}, "number:5"},
      {"gone", {{REG_SZ, first}, {std::nullopt, ""}}, codeOf(kFailure)},
      {"growing", growing, codeOf(resultFromSystemError(kMoreData))},
      {"bytes for a number", {{REG_DWORD, "\5\0\0\0"s}, {REG_BINARY, large}}, numberOrBytes},
  };
}

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_REGISTRY_CHANGING_VALUE_H
