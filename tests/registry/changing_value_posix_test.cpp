// Reads over the tree in memory that stands for the system's registry, while it changes at each
// query.
#include "tests/registry/changing_value.h"
#include "tests/support/os_registry_double.h"

namespace {

using namespace std::string_literals;
using namespace LTLib::Testing;

class ChangingValue : public RegistryObjects {
 protected:
  ~ChangingValue() override { beforeQuery = nullptr; }

  // From now on each query finds the next form of the value "v", the last one for good.
  void change(const std::vector<Form>& forms) {
    static std::vector<Form> s_forms;
    static const RawKey* s_key = nullptr;
    s_forms = {forms.rbegin(), forms.rend()};
    s_key = &m_key;
    beforeQuery = [] {
      if (!s_forms.empty()) {
        s_key->put("v", s_forms.back());
        s_forms.pop_back();
      }
    };
  }

  // A raw query, as "result|type|size|text".
  std::string query(unsigned int capacity) {
    char name[] = "v";
    std::string data(capacity + 1, '\0');
    unsigned int type = 77;
    auto* bytes = capacity != 0 ? reinterpret_cast<unsigned char*>(data.data()) : nullptr;
    const int result = m_manager.regQueryValueEx(m_key.get(), name, &type, bytes, &capacity);
    return std::to_string(result) + '|' + std::to_string(type) + '|' + std::to_string(capacity) +
           '|' + data.c_str();
  }

  const RawKey m_key{(make("K"), path("K"))};
};

TEST_F(ChangingValue, AReadGivesItWhole) {
  CQSRegValue value = this->value("K", "v");
  for (const Change& row : changes("number:5")) {
    change(row.forms);
    EXPECT_TRUE(readOnce(value) == row.content) << row.label;
  }
}

// A raw query repeats what concerns texts; the room for all else is the caller's to have.
TEST_F(ChangingValue, ARawQueryGivesAWholeTextOrFails) {
  const Form first{REG_SZ, std::string(600, 'f')};
  const Form second{REG_SZ, "\xE2\x82\xAC" + std::string(900, 'x')};
  const Form bytes{REG_BINARY, std::string(2000, 'b')};
  const std::tuple<const char*, std::vector<Form>, unsigned int, std::string> cases[] = {
      {"data", {first, second}, 2000, "0|1|903|" + second.bytes},
      {"size", {first, second}, 0, "0|1|903|"},
      {"gone", {first, {std::nullopt, ""}}, 2000, "2|"},
      {"bytes", {first, bytes}, 2000, "0|3|2000|" + bytes.bytes},
      {"size of bytes", {first, bytes}, 0, "0|3|2000|"},
      {"bytes before", {bytes, second}, 2000, "0|1|903|" + second.bytes},
  };
  for (const auto& [label, forms, capacity, answer] : cases) {
    change(forms);
    EXPECT_EQ(query(capacity).substr(0, answer.size()), answer) << label;
  }
}

}  // namespace
