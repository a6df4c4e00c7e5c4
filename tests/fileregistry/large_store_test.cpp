// Stores of the size that real ones reach, and beyond: nothing overflows, nothing gets lost.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "tests/support/store_fixture.h"

using namespace LTLib::Testing;

namespace {

constexpr int kSections = 10'000;
constexpr int kMany = 100'000;
constexpr int kStep = 7;  // not every one needs to be asked for
constexpr std::size_t kLongText = 50'000'000;
constexpr int kDepth = 1000;

std::string numbered(const char* front, int number) {
  return front + std::to_string(number);
}

// Ten children below ten below ten and so on, five levels in all.
std::string pathOf(int section) {
  std::string path = "Root";
  std::string digits = std::to_string(section);
  digits.insert(0, 4 - digits.size(), '0');
  for (const char digit : digits) {
    path.append("\\Key ") += digit;
  }
  return path;
}

// A value line of each type in turn, and what a query then gives.
struct Value {
  std::string line;
  unsigned int type;
  std::string data;
};

Value valueOf(int number) {
  const std::string text = std::to_string(number);
  switch (number % 5) {
    case 0:
      return {"ulong:" + text, REG_DWORD, text};
    case 1:
      return {"string:\"say \"" + text + "\"\"", REG_SZ, "say \"" + text + "\""};
    case 2:
      return {"dir:\"C:\\dir\\" + text + "\\\"", REG_SZ, "C:\\dir\\" + text + "\\"};
    case 3:
      return {"binary:00 1F " + text, REG_BINARY, "00 1F " + text};
    default:
      return {"liststring:\"one\",\\\n\"" + text + "\"", REG_MULTI_SZ,
              std::string("one\0", 4) + text};
  }
}

// Everything below a key as the enumerations and queries of the manager give it.
class Listing {
 public:
  explicit Listing(QSRegistryManager& manager) : m_manager(manager) {}

  void add(const std::string& path) {
    const OpenKey key(m_manager, REG_ROOT_LOCAL_MACHINE, path.c_str());
    ++m_keys;
    for (unsigned int i = 0; addValue(key.get(), path, i); ++i) {
    }
    std::array<char, 200> name{};
    for (unsigned int i = 0;; ++i) {
      unsigned int size = name.size();
      if (m_manager.regEnumKeyEx(key.get(), i, name.data(), &size) != 0) {
        return;
      }
      add(path + '\\' + name.data());
    }
  }

  [[nodiscard]] const std::map<std::string, std::string>& values() const { return m_values; }
  [[nodiscard]] int keys() const { return m_keys; }

 private:
  bool addValue(void* key, const std::string& path, unsigned int index) {
    std::array<char, 200> name{};
    std::array<unsigned char, 200> data{};
    unsigned int nameSize = name.size();
    unsigned int dataSize = data.size() - 1;
    unsigned int type = 0;
    if (m_manager.regEnumValue(key, index, name.data(), &nameSize, nullptr, &type, data.data(),
                               &dataSize) != 0) {
      return false;
    }
    std::string text(reinterpret_cast<const char*>(data.data()), dataSize);
    if (type == REG_DWORD) {
      std::uint32_t number = 0;
      std::memcpy(&number, data.data(), sizeof number);
      text = std::to_string(number);
    }
    m_values[path + '|' + name.data()] = std::to_string(type) + '|' + text;
    return true;
  }

  QSRegistryManager& m_manager;
  std::map<std::string, std::string> m_values;
  int m_keys = 0;
};

class LargeStoreTest : public StoreTest {
 protected:
  void write(const std::string& text) { m_folder.write("HKEY_LOCAL_MACHINE.cfg", text); }

  void saveAndForget() {
    ASSERT_EQ(m_manager.saveConfiguration(REG_ROOT_LOCAL_MACHINE), 0);
    forgetStores();
  }

  [[nodiscard]] std::string textAt(const char* path, const std::string& name) {
    return OpenKey(m_manager, REG_ROOT_LOCAL_MACHINE, path).text(name.c_str());
  }
};

TEST_F(LargeStoreTest, ListsChangesAndKeepsManyKeysAndValues) {
  std::string text;
  std::map<std::string, std::string> expected;
  for (int i = 0; i < kSections; ++i) {
    text += '[' + pathOf(i) + "]\n";
    for (int j = 2 * i; j < 2 * i + 2; ++j) {
      const Value value = valueOf(j);
      const std::string name = numbered("Value ", j);
      text.append("\"").append(name).append("\"=").append(value.line).append("\n");
      expected[pathOf(i) + '|' + name] = std::to_string(value.type) + '|' + value.data;
    }
    text += '\n';
  }
  write(text);

  Listing loaded(m_manager);
  loaded.add("Root\\Key 0");
  for (char digit = '1'; digit <= '9'; ++digit) {
    loaded.add(std::string("Root\\Key ") + digit);
  }
  EXPECT_EQ(loaded.values(), expected);

  const std::string changed = pathOf(kSections / 2);
  {
    const OpenKey key(m_manager, REG_ROOT_LOCAL_MACHINE, changed.c_str());
    ASSERT_EQ(key.setText("Value new", "added"), 0);
    ASSERT_EQ(key.setNumber(numbered("Value ", kSections).c_str(), 77), 0);
    expected[changed + "|Value new"] = "1|added";
    expected[changed + '|' + numbered("Value ", kSections)] = "4|77";
  }
  const std::string before = showRoot(REG_ROOT_LOCAL_MACHINE);
  saveAndForget();
  ASSERT_EQ(load(), 1);
  EXPECT_EQ(showRoot(REG_ROOT_LOCAL_MACHINE), before);
}

TEST_F(LargeStoreTest, KeepsOneVeryLongValue) {
  const std::string longText(kLongText, 'x');
  {
    const OpenKey key(m_manager, REG_ROOT_LOCAL_MACHINE, "A\\B");
    ASSERT_EQ(key.setText("long", longText), 0);
    ASSERT_EQ(key.setText("next", "1"), 0);
  }
  saveAndForget();
  EXPECT_TRUE(textAt("A\\B", "long") == longText);
  EXPECT_EQ(textAt("A\\B", "next"), "1");
}

TEST_F(LargeStoreTest, KeepsAVeryDeepPath) {
  std::string path = "0";
  for (int i = 1; i < kDepth; ++i) {
    path += '\\' + std::to_string(i);
  }
  {
    const OpenKey key(m_manager, REG_ROOT_LOCAL_MACHINE, path.c_str());
    ASSERT_EQ(key.setText("deep", "x"), 0);
  }
  saveAndForget();
  EXPECT_EQ(readFile(store()), '[' + path + "]\n\"deep\"=string:\"x\"\n\n");
  EXPECT_EQ(textAt(path.c_str(), "deep"), "x");
}

TEST_F(LargeStoreTest, KeepsManyValuesOfOneKey) {
  std::string text = "[A\\B]\n";
  for (int i = 0; i < kMany; ++i) {
    text += '"' + numbered("v", i) + "\"=binary:" + std::to_string(i) + '\n';
  }
  write(text + '\n');
  for (int i = 0; i < kMany; i += kStep) {
    ASSERT_EQ(textAt("A\\B", numbered("V", i)), std::to_string(i));
  }
  // From the front, from the back and out of the middle.
  const OpenKey key(m_manager, REG_ROOT_LOCAL_MACHINE, "A\\B");
  for (const int gone : {0, 1, 2, kMany - 1, kMany / 2}) {
    const std::string name = numbered("v", gone);
    EXPECT_EQ(m_manager.regDeleteValue(key.get(), name.c_str()), 0);
    const std::string line = '"' + name + "\"=binary:" + std::to_string(gone) + '\n';
    text.erase(text.find(line), line.size());
  }
  saveAndForget();
  EXPECT_TRUE(readFile(store()) == text + '\n');
}

TEST_F(LargeStoreTest, KeepsManyKeysBesideOneAnother) {
  std::string text;
  for (int i = 0; i < kMany; ++i) {
    text += numbered("[A\\", i) + "]\n\"n\"=binary:" + std::to_string(i) + "\n\n";
  }
  write(text);
  for (int i = 0; i < kMany; i += kStep) {
    ASSERT_EQ(textAt(numbered("a\\", i).c_str(), "N"), std::to_string(i));
  }
  saveAndForget();
  EXPECT_TRUE(readFile(store()) == text);
}

}  // namespace
