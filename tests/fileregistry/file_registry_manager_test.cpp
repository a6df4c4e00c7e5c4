// The operations of the file backend: what they answer, and what they leave in the tree.
#include "ltlib/fileregistry/file_registry_manager.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "ltlib/fileregistry/tree_operations.h"
#include "tests/support/store_fixture.h"

namespace {

using namespace std::string_literals;
using namespace LTLib::Testing;

class FileManager : public StoreTest {
 protected:
  // One step of an enumeration: "name:size" with dots for bytes that were not written, or "-1".
  std::string keyAt(const char* path, unsigned int index, unsigned int capacity) {
    const OpenKey key(path);
    std::string name(8, '.');
    unsigned int size = capacity;
    const int result = m_manager.regEnumKeyEx(key.get(), index, name.data(), &size);
    return result == 0 ? name + ':' + std::to_string(size) : std::to_string(result);
  }
};

TEST_F(FileManager, RefusesNullsAndWhatIsNoHandle) {
  void* const null = nullptr;
  void* const oddConstant = reinterpret_cast<void*>(std::intptr_t{-0x7FFFFFFC});
  unsigned int size = 4;
  unsigned int type = 0;
  unsigned char data[8] = {};
  char name[8] = {};
  void* result = &size;
  const std::pair<void*, const char*> parents[] = {
      {null, "A\\B"}, {oddConstant, "A\\B"}, {&size, "A\\B"}, {kRoot, nullptr}};
  for (const auto& [parent, path] : parents) {
    EXPECT_EQ(m_manager.regOpenKeyEx(parent, path, 0, KEY_READ, &result), -1);
    EXPECT_EQ(m_manager.regCreateKey(parent, path, &result), -1);
    EXPECT_EQ(m_manager.regDeleteKey(parent, path), -1);
    EXPECT_EQ(result, &size);
  }
  for (void* handle : {null, kRoot, oddConstant}) {
    EXPECT_EQ(m_manager.regQueryValueEx(handle, name, &type, data, &size), -1);
    EXPECT_EQ(m_manager.regSetValueEx(handle, "n", REG_SZ, data, 1), -1);
    EXPECT_EQ(m_manager.regEnumKeyEx(handle, 0, name, &size), -1);
    EXPECT_EQ(m_manager.regEnumValue(handle, 0, name, &size, nullptr, &type, data, &size), -1);
    EXPECT_EQ(m_manager.regDeleteValue(handle, "n"), -1);
    EXPECT_EQ(m_manager.regCloseKey(handle), 0);
  }
  const OpenKey key("A\\B");
  EXPECT_EQ(m_manager.regSetValueEx(key.get(), "n", REG_DWORD, nullptr, 4), -1);
  EXPECT_EQ(showRoot(), "<no tree>") << "nor is a store touched to open a key";
}

// A handle that a call is given is closed by it; one that stays open shows as a leak.
TEST_F(FileManager, OpensAndCreatesKeys) {
  void* handle = nullptr;
  unsigned int disposition = 0;
  EXPECT_EQ(m_manager.regCreateKey(kRoot, "A\\B", nullptr), 0);
  OpenKey key("A\\B");
  EXPECT_EQ(key.set(nullptr, "mine"), 0);
  EXPECT_EQ(m_manager.regCreateKeyEx(kRoot, "A\\B", nullptr, 0, 0, &handle, &disposition), 0);
  EXPECT_EQ(key.text(nullptr), "0") << "set by each call";
  EXPECT_EQ(m_manager.regOpenKeyEx(kRoot, "A", 0, KEY_READ, &handle), 0);
  char name[8];
  EXPECT_EQ(m_manager.regEnumKey(handle, 0, name, sizeof name), -1);
  char* const none = nullptr;
  EXPECT_EQ(m_manager.regQueryValueEx(handle, none, nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(m_manager.regCloseKey(handle), 0);
}

// A query adds the sections of its path, and takes one backslash off its end.
TEST_F(FileManager, PathsLeadToSections) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"A\\B\\", "A\\B", "A\nA/B\n"},
      {"A/B\\C\\D\\E", "A/B\\C\\D\\E", "A/B\nA/B/C\nA/B/C/D\nA/B/C/D/E\n"},
      {"A\\\\B", "A\\\\B", "A\nA/\\B\n"},
      {"", "", ""},
      {"\\A\\B", "\\A\\B", ""},
      {"\\[A\\B]", "\\[A\\B]", "A\\B\n"},
      {"[A]\\B", "[A]\\B", "[A]\n[A]/B\n"},
  };
  for (const auto& [path, kept, tree] : cases) {
    restartWith("");
    OpenKey key(path);
    EXPECT_EQ(key.text("n"), "<-1>");
    EXPECT_EQ(static_cast<QSFileKeyHandle*>(key.get())->path(), kept);
    EXPECT_EQ(showRoot(), tree) << path;
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(readFile(store()), "") << "empty sections do not outlive the process";
  }
  // A bracketed name adds a section every time; a path without a name leads nowhere.
  OpenKey bracketed("[A]");
  restartWith("");
  EXPECT_EQ(bracketed.set("n", "x") + bracketed.set("n", "y"), 0);
  OpenKey key("A");
  EXPECT_EQ(key.set("n", "x") + m_manager.regCreateKey(kRoot, "A", nullptr), 0);
  EXPECT_EQ(key.set("line\nfeed", "x"), 0);
  EXPECT_EQ(key.text("n"), "<-1>");
  EXPECT_EQ(showRoot(), "A|n|1|x\nA|n|1|y\n");
}

// What is set, on what is there, and then what the tree holds and a query gives, at once and after
// a save.
TEST_F(FileManager, HoldsValuesAsTheirTypesTell) {
  const std::tuple<const char*, unsigned int, std::string, std::string, std::string> cases[] = {
      {"", REG_SZ, "a\0b\0"s, "1|a", "a"},
      {"", REG_MULTI_SZ, "a\0b\0\0"s, "4|\"a\",\\|n\"b\"", "a\0b"s},
      {"", REG_MULTI_SZ, "", "4|\"\"", ""},
      {"", REG_MULTI_SZ, "a\0\0b\0\0"s, "4|\"a\",\\|n\"\",\\|n\"b\"", "a\0\0b"s},
      {"", REG_MULTI_SZ, "a\0b"s, "4|\"a\",\\|n\"\"", "a\0"s},
      // A value keeps its type.
      {"[A\\B]\n\"N\"=ulong:1\n", REG_SZ, "12 apples\0"s, "0|12 apples", "\x0C\0\0\0"s},
      {"[A\\B]\n\"N\"=string:\"x\"\n", REG_DWORD, "\7\0\0\0"s, "1|7", "7"},
  };
  for (const auto& [before, type, data, held, read] : cases) {
    SCOPED_TRACE(held);
    restartWith(before);
    OpenKey key("A\\B");
    EXPECT_EQ(key.set("N", data, type), 0);
    EXPECT_EQ(showRoot(), "A\nA/B|N|" + held + "\n");
    for (const char* when : {"at once", "after a save and a load"}) {
      EXPECT_EQ(key.text("n"), read) << when;
      EXPECT_EQ(save(), 0);
      forgetStores();
    }
  }
}

TEST_F(FileManager, ReadsNumbersOfAnyText) {
  const std::pair<std::uint32_t, const char*> cases[] = {
      {0, "ff"},  {0, "-99999999999999999999"}, {5, "4294967301"},
      {7, "+7x"}, {0xFFFFFFFFu, "-1"},          {0xFFFFFFFFu, "99999999999999999999"},
  };
  for (const auto& [number, text] : cases) {
    EXPECT_EQ(LTLib::detail::numberOfText(text), number) << text;
  }
  OpenKey key("A\\B");
  EXPECT_EQ(key.set("n", "-2"), 0);
  char name[] = "n";
  unsigned int type = REG_DWORD;
  unsigned int size = 2;
  unsigned char data[] = "...";
  EXPECT_EQ(m_manager.regQueryValueEx(key.get(), name, &type, data, &size), 0);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(data)), "\xFE\xFF.");
  EXPECT_EQ(m_manager.regQueryValueEx(key.get(), name, &type, nullptr, &size), -1);
}

// Capacity against length: a cut text comes without its terminator, and the length is told in full.
TEST_F(FileManager, CopiesNoMoreThanTheCapacity) {
  OpenKey key("A\\B");
  EXPECT_EQ(key.set("s", "hello"), 0);
  EXPECT_EQ(key.set("b", "hello", REG_BINARY), 0);
  EXPECT_EQ(key.set("l", "he\0lo\0\0"s, REG_MULTI_SZ), 0);
  const std::tuple<std::string, unsigned int, std::string> cases[] = {
      {"s", 7, "hello\0.."s}, {"s", 5, "hello\0.."s},         {"s", 4, "hello..."},
      {"s", 0, "h......."},   {"s", 0xFFFFFFFFu, "........"}, {"b", 5, "hello..."},
      {"b", 0, "........"},   {"l", 5, "he\0lo\0.."s},        {"l", 3, "he\0l...."s},
  };
  for (auto [name, size, bytes] : cases) {
    SCOPED_TRACE(name + std::to_string(size));
    std::string buffer(8, '.');
    EXPECT_EQ(m_manager.regQueryValueEx(key.get(), name.data(), nullptr,
                                        reinterpret_cast<unsigned char*>(buffer.data()), &size),
              0);
    EXPECT_EQ(buffer, bytes);
    EXPECT_EQ(size, 5u);
  }
}

TEST_F(FileManager, ListsInTheOrderOfArrival) {
  restartWith(
      "[R\\K\\hello]\n\"x\"=ulong:1\n[R\\K\\a]\n\"y\"=ulong:1\n[R\\K]\n\"s\"=string:\"four\"\n"
      "\"u\"=dword:12345\n\"s\"=binary:again\n\"l\"=liststring:\"a\",\"b\"\n");
  // A name as long as the capacity comes without its terminator.
  EXPECT_EQ(keyAt("R\\K", 0, 6), "hello\0..:5"s);
  EXPECT_EQ(keyAt("R\\K", 0, 5), "hello...:5");
  EXPECT_EQ(keyAt("R\\K", 0, 0), "........:5");
  EXPECT_EQ(keyAt("R", 0, 8), "-1") << "a key right below a root lists nothing";
  EXPECT_EQ(keyAt("R\\K", 1, 8) + keyAt("R\\K", 2, 8), "a\0......:1-1"s);
}

// A name that repeats is listed as often, each time with what a read of that name gives.
TEST_F(FileManager, ListsValuesWithTheirData) {
  std::string text = "[R\\K]\n";
  std::string expected;
  for (const int values : {3, 40}) {
    for (int i = 0; i < values; ++i) {
      const std::string number = std::to_string(i);
      text += "\"v" + number + "\"=string:\"text " + number + "\"\n\"V" + number + "\"=ulong:5\n";
      expected += 'v' + number + "=text " + number + ";V" + number + "=text " + number + ';';
    }
    restartWith(text);
    const OpenKey key("R\\K");
    char name[8];
    unsigned char data[16];
    unsigned int nameSize = sizeof name;
    unsigned int dataSize = sizeof data - 1;
    unsigned int type = REG_NONE;
    std::string listed;
    for (unsigned int i = 0; m_manager.regEnumValue(key.get(), i, name, &nameSize, nullptr, &type,
                                                    data, &dataSize) == 0;
         ++i, nameSize = sizeof name, dataSize = sizeof data - 1) {
      listed.append(name).append("=").append(reinterpret_cast<char*>(data), dataSize) += ';';
    }
    EXPECT_EQ(listed, expected);
    text = "[R\\K]\n";
    expected.clear();
  }
}

TEST_F(FileManager, DeletesKeysWithoutSubKeys) {
  restartWith("[A\\B]\n\"n\"=ulong:1\n[A\\B\\C]\n[D\\E]\n\"n\"=ulong:1\n");
  const std::tuple<const char*, int> cases[] = {
      {"A\\B", -1}, {"A\\X\\C", -1}, {"A\\B\\", -1}, {"a\\b\\c\\", 0}, {"A\\B\\C", -1},
      {"A", -1},    {"A\\B", 0},     {"a", 0},       {"", -1},         {"D\\E\\F", -1}};
  for (const auto& [path, result] : cases) {
    EXPECT_EQ(m_manager.regDeleteKey(kRoot, path), result) << path;
  }
  EXPECT_EQ(showRoot(), "D\nD/E|n|0|1\n");
}

// The way of the last walk is remembered for each root, but never past a deletion.
TEST_F(FileManager, FindsAKeyAsFromTheRoot) {
  OpenKey key("A\\B");
  OpenKey other("A\\B", REG_ROOT_USERS);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(key.set("n", "x"), 0);
    EXPECT_EQ(other.text("n") + key.text("N"), "<-1>x");
    EXPECT_EQ(m_manager.regDeleteKey(kRoot, "a\\b") + OpenKey("A").set("n", "x"), 0);
    EXPECT_EQ(showRoot(), "A\n") << "nothing is stored right below a root";
  }
  // A walk may go on from where the last one ended; reading shows the way, since it adds sections.
  for (const char* path : {"A\\B", "A\\B\\C\\D", "A\\B", "A\\BCD", "A\\\\B", "A\\\\B\\C"}) {
    EXPECT_EQ(OpenKey(path, REG_ROOT_CLASSES_ROOT).text("n"), "<-1>");
  }
  EXPECT_EQ(showRoot(REG_ROOT_CLASSES_ROOT), "A\nA/B\nA/B/C\nA/B/C/D\nA/BCD\nA/\\B\nA/\\B\\C\n");
}

// It is the type of the value that is there which tells what has a form, and whether the lines of a
// list may be joined, if it comes back with the same items.
TEST_F(FileManager, RefusesWhatHasNoFormInAFile) {
  const std::string text =
      "[A\\B]\n\"s\"=string:\"x\"\n\"b\"=binary:x\n\"u\"=ulong:1\n\"l\"=liststring:\"x\"\n";
  const std::tuple<const char*, const char*, unsigned int, std::string> cases[] = {
      {"A\\B", "a\"b", REG_SZ, "x"},   {"A\\B", "u", REG_SZ, "1\n2"},
      {"A\\B", "l", REG_SZ, "a\\\nb"}, {"A\\B", "s", REG_MULTI_SZ, "a\0b\0\0"s},
      {"A\\\\B", "n", REG_SZ, "x"},    {"A\\C]", "n", REG_SZ, "x"},
  };
  restartWith(text);
  for (const auto& [path, name, type, data] : cases) {
    EXPECT_EQ(OpenKey(path).set(name, data, type), -1) << path << name;
  }
  EXPECT_EQ(m_manager.regCreateKey(kRoot, "A\\C]", nullptr), -1);
  EXPECT_EQ(save(), 0);
  EXPECT_EQ(readFile(store()), text + "\n") << "a refusal leaves nothing behind";
  OpenKey key("A\\B");
  EXPECT_EQ(key.set("l", "\"a\",\\\n\"b\""), 0);
  EXPECT_EQ(key.text("l"), "a\0b"s);
}

}  // namespace
