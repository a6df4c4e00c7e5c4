#include "ltlib/fileregistry/file_registry_manager.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ltlib/fileregistry/tree_operations.h"
#include "tests/support/store_fixture.h"

namespace {

using namespace std::string_literals;
using LTLib::predefinedRootHandle;
using LTLib::Testing::forgetStores;
using LTLib::Testing::OpenKey;
using LTLib::Testing::readFile;
using LTLib::Testing::showRoot;

constexpr enumRegRoot kMachine = REG_ROOT_LOCAL_MACHINE;
void* const kRoot = predefinedRootHandle(kMachine);

class FileManager : public LTLib::Testing::StoreTest {
 protected:
  void reload() {
    EXPECT_EQ(m_manager.saveConfiguration(kMachine), 0);
    forgetStores();
  }

  // One step of an enumeration: "name", or "-1"; '.' for bytes that were not written.
  std::string keyAt(const char* path, unsigned int index, unsigned int capacity = 20) {
    const OpenKey key(m_manager, kMachine, path);
    std::string name(30, '.');
    unsigned int size = capacity;
    if (m_manager.regEnumKeyEx(key.get(), index, name.data(), &size) != 0) {
      return "-1";
    }
    return name.substr(0, capacity + 1) + ":" + std::to_string(size);
  }

  std::string valueAt(const char* path, unsigned int index) {
    const OpenKey key(m_manager, kMachine, path);
    char name[20] = {};
    unsigned int size = sizeof name;
    unsigned int type = 0;
    unsigned int dataSize = 0;
    const int result =
        m_manager.regEnumValue(key.get(), index, name, &size, nullptr, &type, nullptr, &dataSize);
    return result != 0 ? std::to_string(result)
                       : name + ":"s + std::to_string(type) + ":" + std::to_string(dataSize);
  }
};

TEST_F(FileManager, RefusesNullsAndWhatIsNoHandle) {
  void* const oddConstant = reinterpret_cast<void*>(std::intptr_t{-0x7FFFFFFC});
  int local = 0;
  unsigned int size = 4;
  unsigned int type = 0;
  unsigned char data[8] = {};
  char name[8] = {};
  void* result = &local;
  for (void* parent : {static_cast<void*>(nullptr), oddConstant, static_cast<void*>(&local)}) {
    EXPECT_EQ(m_manager.regOpenKeyEx(parent, "A\\B", 0, KEY_READ, &result), -1);
    EXPECT_EQ(m_manager.regCreateKey(parent, "A\\B", &result), -1);
    EXPECT_EQ(m_manager.regDeleteKey(parent, "A\\B"), -1);
    EXPECT_EQ(result, &local);
  }
  EXPECT_EQ(m_manager.regOpenKeyEx(kRoot, nullptr, 0, KEY_READ, &result), -1);
  EXPECT_EQ(m_manager.regCreateKey(kRoot, nullptr, &result), -1);
  EXPECT_EQ(m_manager.regDeleteKey(kRoot, nullptr), -1);
  for (void* handle : {static_cast<void*>(nullptr), kRoot, oddConstant}) {
    EXPECT_EQ(m_manager.regQueryValueEx(handle, name, &type, data, &size), -1);
    EXPECT_EQ(m_manager.regSetValueEx(handle, "n", REG_SZ, data, 1), -1);
    EXPECT_EQ(m_manager.regEnumKeyEx(handle, 0, name, &size), -1);
    EXPECT_EQ(m_manager.regEnumValue(handle, 0, name, &size, nullptr, &type, data, &size), -1);
    EXPECT_EQ(m_manager.regDeleteValue(handle, "n"), -1);
    EXPECT_EQ(m_manager.regCloseKey(handle), 0);
  }
  const OpenKey key(m_manager, kMachine, "A\\B");
  EXPECT_EQ(key.setText("n", "x"), 0);
  EXPECT_EQ(m_manager.regEnumValue(key.get(), 0, nullptr, &size, nullptr, &type, data, &size), -1);
  EXPECT_EQ(m_manager.regSetValueEx(key.get(), "n", REG_DWORD, nullptr, 4), -1);
  EXPECT_EQ(m_manager.regEnumKey(key.get(), 0, name, sizeof name), -1);
}

TEST_F(FileManager, OpeningTouchesNoStoreAndClosesWhatWasThere) {
  void* handle = nullptr;
  EXPECT_EQ(m_manager.regOpenKeyEx(kRoot, "No\\Such", 0, KEY_READ, &handle), 0);
  EXPECT_EQ(m_manager.regOpenKeyEx(kRoot, "Other\\One", 0, KEY_READ, &handle), 0);
  EXPECT_EQ(m_manager.regOpenKeyEx(kRoot, "Third\\One", 0, KEY_READ, nullptr), 0);
  EXPECT_EQ(m_manager.regCloseKey(handle), 0);
  EXPECT_EQ(showRoot(kMachine), "<no tree>");
  EXPECT_TRUE(m_folder.names().empty());
}

TEST_F(FileManager, CreatingSetsTheDefaultValue) {
  void* handle = nullptr;
  unsigned int disposition = 77;
  EXPECT_EQ(m_manager.regCreateKeyEx(kRoot, "A\\B", nullptr, 0, 0, &handle, &disposition), 0);
  EXPECT_EQ(disposition, 77u);
  EXPECT_EQ(m_manager.regCloseKey(handle), 0);
  EXPECT_EQ(showRoot(kMachine), "A\nA/B|Default|1|0\n");
  const OpenKey key(m_manager, kMachine, "A\\B");
  EXPECT_EQ(key.setText(nullptr, "x"), 0);
  EXPECT_EQ(key.text("dEFAULT"), "x");
  EXPECT_EQ(key.text(""), "<-1>") << "an empty name is a name of its own";
  EXPECT_EQ(m_manager.regCreateKey(kRoot, "A\\B", nullptr), 0);
  EXPECT_EQ(key.text(nullptr), "0");
  EXPECT_EQ(m_manager.regCreateKey(kRoot, "A", &(handle = nullptr)), 0) << "leads to no section";
  EXPECT_EQ(m_manager.regCloseKey(handle), 0);
  EXPECT_EQ(showRoot(kMachine), "A\nA/B|Default|1|0\n");
  EXPECT_EQ(m_manager.regDeleteValue(key.get(), nullptr), 0);
  EXPECT_EQ(m_manager.regDeleteValue(key.get(), nullptr), -1);
}

// What is set, what the tree holds, and the type and bytes that come back.
TEST_F(FileManager, HoldsValuesAsTheirTypesTell) {
  const struct {
    const char* label;
    unsigned int type;
    std::string data;
    std::string held;
    unsigned int typeRead;
    std::string read;
  } cases[] = {
      {"text", REG_SZ, "hello\0"s, "1|hello", REG_SZ, "hello"},
      {"text up to its NUL", REG_SZ, "a\0b\0"s, "1|a", REG_SZ, "a"},
      {"text without a NUL", REG_SZ, "ab", "1|ab", REG_SZ, "ab"},
      {"empty text", REG_SZ, "\0"s, "1|", REG_SZ, ""},
      {"expandable text", REG_EXPAND_SZ, "%X%\0"s, "1|%X%", REG_SZ, "%X%"},
      {"other type", REG_QWORD, "12\0"s, "1|12", REG_SZ, "12"},
      {"number", REG_DWORD, "\x05\0\0\0"s, "0|5", REG_DWORD, "\x05\0\0\0"s},
      {"greatest number", REG_DWORD, "\xFF\xFF\xFF\xFF", "0|-1", REG_DWORD, "\xFF\xFF\xFF\xFF"},
      {"binary up to its NUL", REG_BINARY, "A\0B"s, "3|A", REG_BINARY, "A"},
      {"list", REG_MULTI_SZ, "a\0b\0\0"s, "4|\"a\",\\|n\"b\"", REG_MULTI_SZ, "a\0b"s},
      {"list of one", REG_MULTI_SZ, "abc\0\0"s, "4|\"abc\"", REG_MULTI_SZ, "abc"},
      {"empty list", REG_MULTI_SZ, "\0"s, "4|\"\"", REG_MULTI_SZ, ""},
      {"list of two bytes", REG_MULTI_SZ, "\0\0"s, "4|\"\"", REG_MULTI_SZ, ""},
      {"list of no bytes", REG_MULTI_SZ, "", "4|\"\"", REG_MULTI_SZ, ""},
      {"list with an empty item", REG_MULTI_SZ, "a\0\0b\0\0"s, "4|\"a\",\\|n\"\",\\|n\"b\"",
       REG_MULTI_SZ, "a\0\0b"s},
      {"backslash splits an item", REG_MULTI_SZ, "a\\b\0\0"s, "4|\"a\",\\|n\"b\"", REG_MULTI_SZ,
       "a\0b"s},
      {"comma splits an item", REG_MULTI_SZ, "a,b\0\0"s, "4|\"a,b\"", REG_MULTI_SZ, "a\0b"s},
      {"quotes are dropped", REG_MULTI_SZ, "a\"b\0\0"s, "4|\"a\"b\"", REG_MULTI_SZ, "ab"},
      {"list with one NUL too few", REG_MULTI_SZ, "a\0b"s, "4|\"a\",\\|n\"\"", REG_MULTI_SZ,
       "a\0"s},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.label);
    forgetStores();
    std::filesystem::remove(store());
    const OpenKey key(m_manager, kMachine, "A\\B");
    EXPECT_EQ(m_manager.regSetValueEx(key.get(), "n", row.type,
                                      reinterpret_cast<const unsigned char*>(row.data.data()),
                                      static_cast<unsigned int>(row.data.size())),
              0);
    EXPECT_EQ(showRoot(kMachine), "A\nA/B|n|" + row.held + "\n");
    for (const char* when : {"at once", "after a save and a load"}) {
      unsigned int type = 0;
      char name[] = "N";
      EXPECT_EQ(m_manager.regQueryValueEx(key.get(), name, &type, nullptr, nullptr), 0) << when;
      EXPECT_EQ(type, row.typeRead) << when;
      EXPECT_EQ(key.text("N"), row.read) << when;
      reload();
    }
  }
}

TEST_F(FileManager, AValueKeepsItsType) {
  m_folder.write("HKEY_LOCAL_MACHINE.cfg",
                 "[A\\B]\n\"u\"=ulong:1\n\"s\"=string:\"x\"\n\"d\"=dir:\"x\"\n");
  const OpenKey key(m_manager, kMachine, "A\\B");
  EXPECT_EQ(key.setText("u", "12 apples"), 0);
  EXPECT_EQ(key.text("u"), "\x0C\0\0\0"s);
  EXPECT_EQ(key.setNumber("s", 7), 0);
  EXPECT_EQ(key.setText("d", "a\0b\0"s, REG_MULTI_SZ), 0);
  EXPECT_EQ(showRoot(kMachine), "A\nA/B|u|0|12 apples\nA/B|s|1|7\nA/B|d|2|\"a\",\\|n\"b\"\n");
  reload();
  EXPECT_EQ(key.text("d"), "\"a\",\"b\"");
}

TEST_F(FileManager, ReadsNumbersOfAnyTextWhenAskedTo) {
  const struct {
    const char* text;
    std::uint32_t number;
  } cases[] = {{"5", 5},
               {" \t-1", 0xFFFFFFFFu},
               {"+7x", 7},
               {"", 0},
               {"ff", 0},
               {"--1", 0},
               {"+-1", 0},
               {"4294967301", 5},
               {"-2147483649", 0x7FFFFFFFu},
               {"99999999999999999999", 0xFFFFFFFFu},
               {"-99999999999999999999", 0}};
  const OpenKey key(m_manager, kMachine, "A\\B");
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(key.setText("n", row.text), 0);
    unsigned int type = REG_DWORD;
    unsigned int size = 4;
    std::uint32_t number = 77;
    auto* data = reinterpret_cast<unsigned char*>(&number);
    char name[] = "n";
    EXPECT_EQ(m_manager.regQueryValueEx(key.get(), name, &type, data, &size), 0);
    EXPECT_EQ(number, row.number);
    EXPECT_EQ(type, REG_DWORD);
    EXPECT_EQ(m_manager.regQueryValueEx(key.get(), name, &type, nullptr, &size), -1);
    number = 0x55555555;
    size = 2;
    EXPECT_EQ(m_manager.regQueryValueEx(key.get(), name, &type, data, &size), 0);
    EXPECT_EQ(number, (row.number & 0xFFFFu) | 0x55550000u);
  }
}

// Capacity against length: a cut text comes without its terminator, and the length is told in full.
TEST_F(FileManager, CopiesNoMoreThanTheCapacity) {
  const OpenKey key(m_manager, kMachine, "A\\B");
  EXPECT_EQ(key.setText("s", "hello"), 0);
  EXPECT_EQ(key.setText("b", "hello", REG_BINARY), 0);
  EXPECT_EQ(key.setText("l", "he\0lo\0"s, REG_MULTI_SZ), 0);
  const struct {
    const char* name;
    unsigned int capacity;
    std::string bytes;
  } cases[] = {
      {"s", 5, "hello\0.."s},         {"s", 7, "hello\0.."s},
      {"s", 4, "hello..."},           {"s", 0, "h......."},
      {"s", 0xFFFFFFFFu, "........"}, {"s", 0x80000000u, "........"},
      {"b", 5, "hello..."},           {"b", 4, "hell...."},
      {"b", 0, "........"},           {"b", 0xFFFFFFFFu, "........"},
      {"l", 5, "he\0lo\0.."s},        {"l", 3, "he\0l...."s},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name + std::to_string(row.capacity));
    std::string buffer(8, '.');
    unsigned int size = row.capacity;
    std::string name = row.name;
    EXPECT_EQ(m_manager.regQueryValueEx(key.get(), name.data(), nullptr,
                                        reinterpret_cast<unsigned char*>(buffer.data()), &size),
              0);
    EXPECT_EQ(buffer, row.bytes);
    EXPECT_EQ(size, 5u);
  }
}

TEST_F(FileManager, ListsInTheOrderOfArrival) {
  m_folder.write(
      "HKEY_LOCAL_MACHINE.cfg",
      "[R\\K\\b]\n\"x\"=ulong:1\n[R\\K\\a]\n\"y\"=ulong:1\n[R\\K]\n\"s\"=string:\"four\"\n"
      "\"u\"=dword:12345\n\"s\"=binary:again\n\"l\"=liststring:\"a\",\"b\"\n");
  EXPECT_EQ(keyAt("R\\K", 0), "b" + "\0"s + std::string(19, '.') + ":1");
  EXPECT_EQ(keyAt("R\\K", 1).substr(0, 1), "a");
  EXPECT_EQ(keyAt("R\\K", 2), "-1");
  EXPECT_EQ(valueAt("R\\K", 0), "s:1:4");
  EXPECT_EQ(valueAt("R\\K", 1), "u:4:4");
  EXPECT_EQ(valueAt("R\\K", 2), "s:1:4") << "a look-up by name finds the first";
  EXPECT_EQ(valueAt("R\\K", 3), "l:7:7") << "the size of the quoted text";
  EXPECT_EQ(valueAt("R\\K", 4), "-1");
  EXPECT_EQ(keyAt("R", 0), "-1") << "a key right below a root lists nothing";
  EXPECT_EQ(keyAt("No\\Such", 0), "-1");
  EXPECT_EQ(valueAt("No\\Such", 0), "-1");
  EXPECT_EQ(showRoot(kMachine).find("No"), std::string::npos) << "listing adds nothing";
}

TEST_F(FileManager, NamesAsLongAsTheCapacityComeWithoutTerminator) {
  EXPECT_EQ(m_manager.regCreateKey(kRoot, "R\\K\\hello", nullptr), 0);
  EXPECT_EQ(keyAt("R\\K", 0, 6), "hello\0.:5"s);
  EXPECT_EQ(keyAt("R\\K", 0, 5), "hello.:5");
  EXPECT_EQ(keyAt("R\\K", 0, 2), "he.:5");
  EXPECT_EQ(keyAt("R\\K", 0, 0), ".:5");
}

TEST_F(FileManager, ReadingAndDeletingValuesAddSections) {
  EXPECT_EQ(OpenKey(m_manager, kMachine, "A\\B\\C").text("n"), "<-1>");
  const OpenKey key(m_manager, kMachine, "A\\D\\");
  EXPECT_EQ(m_manager.regDeleteValue(key.get(), "n"), -1);
  EXPECT_EQ(static_cast<QSFileKeyHandle*>(key.get())->path, "A\\D");
  EXPECT_EQ(showRoot(kMachine), "A\nA/B\nA/B/C\nA/D\n");
  reload();
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(showRoot(kMachine), "") << "empty sections do not outlive the process";
}

TEST_F(FileManager, KeysRightBelowARootHoldNothing) {
  const OpenKey key(m_manager, kMachine, "A");
  EXPECT_EQ(key.setText("n", "x"), 0);
  EXPECT_EQ(key.setText("line\nfeed", "x"), 0);
  EXPECT_EQ(key.text("n"), "<-1>");
  EXPECT_EQ(showRoot(kMachine), "");
  const OpenKey bracketed(m_manager, kMachine, "[A]");
  EXPECT_EQ(bracketed.setText("n", "x"), 0);
  EXPECT_EQ(bracketed.setText("n", "y"), 0);
  EXPECT_EQ(showRoot(kMachine), "A|n|1|x\nA|n|1|y\n");
}

TEST_F(FileManager, DeletesKeysWithoutSubKeys) {
  for (const char* path : {"A\\B", "A\\B\\C", "D\\E"}) {
    EXPECT_EQ(m_manager.regCreateKey(kRoot, path, nullptr), 0);
  }
  const struct {
    const char* path;
    int result;
  } cases[] = {{"A\\B", -1},  {"A\\X\\C", -1}, {"A\\B\\", -1}, {"a\\b\\c\\", 0}, {"A\\B\\C", -1},
               {"A", -1},     {"A\\B", 0},     {"a", 0},       {"A", -1},        {"\\D", -1},
               {"D\\\\", -1}, {"", -1},        {"D\\E\\F", -1}};
  for (const auto& row : cases) {
    EXPECT_EQ(m_manager.regDeleteKey(kRoot, row.path), row.result) << row.path;
  }
  EXPECT_EQ(showRoot(kMachine), "D\nD/E|Default|1|0\n");
}

TEST_F(FileManager, FindsAKeyAnewAfterItWasDeleted) {
  const OpenKey key(m_manager, REG_ROOT_LOCAL_MACHINE, "A\\B");
  const OpenKey other(m_manager, REG_ROOT_USERS, "A\\B");
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(key.text("n"), "<-1>");
    EXPECT_EQ(key.setText("n", "x"), 0);
    EXPECT_EQ(key.text("N"), "x");
    EXPECT_EQ(other.text("n"), "<-1>");
    EXPECT_EQ(m_manager.regDeleteKey(predefinedRootHandle(REG_ROOT_LOCAL_MACHINE), "a\\b"), 0);
  }
  // Each use takes one backslash off, so that it leads to another key, or to none.
  const OpenKey twice(m_manager, REG_ROOT_CLASSES_ROOT, "A\\B\\\\");
  EXPECT_EQ(twice.setText("n", "1"), 0);
  EXPECT_EQ(showRoot(REG_ROOT_CLASSES_ROOT), "A\nA/B\n");
  EXPECT_EQ(twice.setText("n", "2"), 0);
  EXPECT_EQ(showRoot(REG_ROOT_CLASSES_ROOT), "A\nA/B|n|1|2\n");
  const OpenKey ending(m_manager, REG_ROOT_CURRENT_CONFIG, "A\\\\B\\\\\\");
  for (int round = 0; round < 4; ++round) {
    EXPECT_EQ(ending.text("n"), "<-1>");
  }
  EXPECT_EQ(showRoot(REG_ROOT_CURRENT_CONFIG), "A\nA/\\B\\\\\nA/\\B\\\nA/\\B\n");
}

// A walk may go on from where the last one ended; reading shows the way, since it adds sections.
TEST_F(FileManager, WalksOnAsFromTheRoot) {
  for (const char* path : {"A\\B", "A\\B\\C\\D", "A\\B", "A\\BCD", "A\\\\B", "A\\\\B\\C"}) {
    EXPECT_EQ(OpenKey(m_manager, REG_ROOT_USERS, path).text("n"), "<-1>");
  }
  EXPECT_EQ(showRoot(REG_ROOT_USERS), "A\nA/B\nA/B/C\nA/B/C/D\nA/BCD\nA/\\B\nA/\\B\\C\n");
}

TEST_F(FileManager, RefusesWhatHasNoFormInAFile) {
  const struct {
    const char* path;
    const char* name;
    unsigned int type;
    std::string text;
  } cases[] = {
      {"A\\B", "a\"b", REG_SZ, "x"},    {"A\\B", "a\nb", REG_SZ, "x"},
      {"A\\B", "", REG_SZ, "x"},        {"A\\B", "n", REG_SZ, "a\nb"},
      {"A\\B", "n", REG_BINARY, "a\\"}, {"A\\B", "n", REG_BINARY, "a\nb"},
      {"A\\B]", "n", REG_SZ, "x"},      {"A\\B\nC", "n", REG_SZ, "x"},
      {"A\\\\B", "n", REG_SZ, "x"},     {"A\\B", "n", REG_MULTI_SZ, "a\nb\0"s},
      {"\\[A\\B]", "n", REG_SZ, "x"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.path + "|"s + row.name + "|" + row.text);
    const OpenKey key(m_manager, kMachine, row.path);
    EXPECT_EQ(key.setText(row.name, row.text, row.type), -1);
    EXPECT_EQ(showRoot(kMachine), "") << "a refusal leaves nothing behind";
  }
  const OpenKey key(m_manager, kMachine, "A\\B");
  EXPECT_EQ(key.setNumber("a\"b", 1), -1);
  void* result = &result;
  EXPECT_EQ(m_manager.regCreateKey(kRoot, "A\\B]", &result), -1);
  EXPECT_EQ(m_manager.regCreateKeyEx(kRoot, "A\\B]", nullptr, 0, 0, &result, nullptr), -1);
  EXPECT_EQ(result, &result);
  EXPECT_EQ(showRoot(kMachine), "");
  EXPECT_EQ(key.setText("u", "1", REG_BINARY), 0);
  EXPECT_EQ(key.setText("u", "1\n2"), -1);
  EXPECT_EQ(showRoot(kMachine), "A\nA/B|u|3|1\n");
}

TEST_F(FileManager, TreeOperationsListAndSetByTypeCode) {
  using namespace LTLib::detail;
  QSFileKeyHandle key{kRoot, "A\\B"};
  for (const QSCfgTypeCode code : {kCfgULong, kCfgDir}) {
    EXPECT_TRUE(cfgSetValue(key, "n", "x", code)) << "makes no field, and is no failure";
  }
  std::vector<std::string> names = {"left over"};
  EXPECT_TRUE(cfgListFields(key, names));
  EXPECT_TRUE(names.empty());
  EXPECT_TRUE(cfgSetNumber(key, nullptr, 4294967295u));
  EXPECT_TRUE(cfgListFields(key, names));
  EXPECT_EQ(names, std::vector<std::string>{"Default"});
  QSFileKeyHandle other{reinterpret_cast<void*>(&names), "A\\B"};
  std::uint32_t number = 0;
  EXPECT_TRUE(cfgQueryNumber(other, nullptr, number)) << "anything else is the machine's root";
  EXPECT_EQ(number, 4294967295u);
  QSFileKeyHandle absent{kRoot, "A\\C"};
  EXPECT_FALSE(cfgListSections(absent, names));
  EXPECT_FALSE(cfgListFields(absent, names));
}

}  // namespace
