// The backend over the operating system's registry. Where the system has none, the same cases run
// on the tree in memory, so that both sides of the contract give the same answers.
#include "ltlib/registry/win32_registry_manager.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ltlib/platform/os_registry.h"
#include "tests/support/private_key.h"

namespace {

using std::string_literals::operator""s;
using LTLib::predefinedRootHandle;

constexpr int kFileNotFound = 2;
constexpr int kAccessDenied = 5;
constexpr int kInvalidHandle = 6;
constexpr int kInvalidParameter = 87;
constexpr int kBadPathname = 161;
constexpr int kMoreData = 234;
constexpr int kNoMoreItems = 259;
constexpr int kKeyDeleted = 1018;

constexpr unsigned int kTextTypes[] = {REG_SZ, REG_EXPAND_SZ, REG_LINK, REG_MULTI_SZ};

unsigned char* bytesOf(std::string& text) {
  return reinterpret_cast<unsigned char*>(text.data());
}

struct Read {
  int result = -1;
  unsigned int type = 77;
  unsigned int size = 0;
  std::string bytes;
};

class Win32Registry : public testing::Test {
 protected:
  void* open(const std::string& subKey, int access = KEY_ALL_ACCESS) {
    void* key = nullptr;
    EXPECT_EQ(m_manager.regOpenKeyEx(m_key.root(), m_key.path(subKey).c_str(), 0, access, &key), 0);
    return key;
  }
  void* create(const std::string& subKey) {
    void* key = nullptr;
    EXPECT_EQ(m_manager.regCreateKey(m_key.root(), m_key.path(subKey).c_str(), &key), 0);
    return key;
  }

  int set(const char* name, unsigned int type, std::string bytes) {
    return m_manager.regSetValueEx(m_key.get(), name, type, bytesOf(bytes),
                                   static_cast<unsigned int>(bytes.size()));
  }

  // Stores units as they are, past the conversion.
  void setWide(const char16_t* name, unsigned int type, std::u16string_view units,
               std::size_t bytes) {
    EXPECT_EQ(LTLib::Platform::OsRegistry::setValue(
                  m_key.get(), name, type, reinterpret_cast<const unsigned char*>(units.data()),
                  static_cast<unsigned int>(bytes)),
              0);
  }
  std::u16string wide(const char16_t* name) {
    unsigned int size = 0;
    EXPECT_EQ(LTLib::Platform::OsRegistry::queryValue(m_key.get(), name, nullptr, nullptr, &size),
              0);
    std::u16string units(size / 2, u'\0');
    EXPECT_EQ(
        LTLib::Platform::OsRegistry::queryValue(
            m_key.get(), name, nullptr, reinterpret_cast<unsigned char*>(units.data()), &size),
        0);
    return units;
  }

  // With no capacity asks for the size alone. Bytes that were not written show as dots.
  Read read(const char* name, unsigned int capacity, std::size_t room = 64) {
    Read got;
    std::string own = name != nullptr ? name : "";
    std::string buffer(room, '.');
    got.size = capacity;
    got.result =
        m_manager.regQueryValueEx(m_key.get(), name != nullptr ? own.data() : nullptr, &got.type,
                                  capacity != 0 ? bytesOf(buffer) : nullptr, &got.size);
    got.bytes = buffer.substr(0, buffer.find_last_not_of('.') + 1);
    return got;
  }

  // As callers do it: the size first, then the data.
  Read readWhole(const char* name) {
    const unsigned int size = read(name, 0).size;
    return read(name, size, size);
  }

  LTLib::Testing::PrivateKey m_key;
  QSWin32RegistryManager& m_manager = m_key.manager();
};

TEST_F(Win32Registry, TextsComeBackAsUtf8) {
  const struct {
    const char* label;
    std::string text;
    std::u16string stored;
  } cases[] = {
      {"ASCII", "abc\0"s, u"abc\0"s},
      {"empty", "\0"s, u"\0"s},
      {"beyond ASCII", "\xC3\xA4\xE2\x82\xAC\0"s, u"\u00E4\u20AC\0"s},
      {"beyond the basic plane", "\xF0\x9F\x98\x80\0"s, u"\xD83D\xDE00\0"s},
      {"a list", "one\0two\0\0"s, u"one\0two\0\0"s},
      {"no terminator", "abc", u"abc"},
      {"a megabyte", std::string(1 << 20, 'x') + '\0', std::u16string(1 << 20, u'x') + u'\0'},
  };
  for (const unsigned int type : kTextTypes) {
    for (const auto& row : cases) {
      SCOPED_TRACE(std::string(row.label) + " as " + std::to_string(type));
      EXPECT_EQ(set("n", type, row.text), 0);
      EXPECT_TRUE(wide(u"n") == row.stored);
      const Read got = readWhole("n");
      EXPECT_EQ(got.result, 0);
      EXPECT_EQ(got.type, type);
      EXPECT_EQ(got.size, row.text.size());
      EXPECT_TRUE(got.bytes == row.text);
    }
  }
}

TEST_F(Win32Registry, TextsAreCutToTheCapacity) {
  ASSERT_EQ(set("n", REG_SZ, "a\xE2\x82\xAC"s + "bc\0"s), 0);
  const struct {
    unsigned int capacity;
    std::string bytes;
  } cases[] = {{1, "a"}, {3, "a"}, {4, "a\xE2\x82\xAC"}, {6, "a\xE2\x82\xAC"s + "bc"}};
  for (const auto& row : cases) {
    const Read got = read("n", row.capacity);
    EXPECT_EQ(got.result, 0) << row.capacity;
    EXPECT_EQ(got.size, 7u) << row.capacity;
    EXPECT_EQ(got.bytes, row.bytes) << row.capacity;
  }
}

TEST_F(Win32Registry, FaultyTextsBecomeReplacementCharacters) {
  EXPECT_EQ(set("n", REG_SZ, "a\x80z\0"s), 0);
  EXPECT_TRUE(wide(u"n") == u"a\xFFFDz\0"s);
  setWide(u"n", REG_SZ, u"a\xD83Dz", 8);
  EXPECT_EQ(readWhole("n").bytes, "a\xEF\xBF\xBDz\0"s);
}

TEST_F(Win32Registry, TextsOfOddSizesReadAsNuls) {
  setWide(u"n", REG_SZ, u"abcd", 7);
  const Read got = readWhole("n");
  EXPECT_EQ(got.result, 0);
  EXPECT_EQ(got.size, 3u);
  EXPECT_EQ(got.bytes, "\0\0\0"s);
}

TEST_F(Win32Registry, TextsOfNoBytesAreNotWritten) {
  ASSERT_EQ(set("kept", REG_SZ, "old\0"s), 0);
  for (const unsigned int type : kTextTypes) {
    EXPECT_EQ(set("kept", type, ""), 0);
    EXPECT_EQ(m_manager.regSetValueEx(m_key.get(), "kept", type, nullptr, 4), 0);
    EXPECT_EQ(set("none", type, ""), 0);
    EXPECT_EQ(read("none", 0).result, kFileNotFound);
  }
  EXPECT_EQ(readWhole("kept").bytes, "old\0"s);
  setWide(u"empty", REG_SZ, u"", 0);
  const Read got = read("empty", 8);
  EXPECT_EQ(got.result, 0);
  EXPECT_EQ(got.size, 0u);
  EXPECT_EQ(got.bytes, "");
}

TEST_F(Win32Registry, OtherTypesAreBytes) {
  for (const unsigned int type :
       {unsigned{REG_NONE}, unsigned{REG_BINARY}, unsigned{REG_DWORD}, unsigned{REG_QWORD}, 99u}) {
    for (const std::string& bytes : {""s, "\0\xFF\x80"s, std::string(1 << 20, '\x7F')}) {
      EXPECT_EQ(set("n", type, bytes), 0);
      const Read got = readWhole("n");
      EXPECT_EQ(got.result, 0);
      EXPECT_EQ(got.type, type);
      EXPECT_EQ(got.size, bytes.size());
      EXPECT_TRUE(got.bytes == bytes);
    }
  }
}

// The size of the value goes to the system, not the caller's capacity.
TEST_F(Win32Registry, OtherTypesAreWrittenWhole) {
  ASSERT_EQ(set("n", REG_BINARY, "12345678"), 0);
  const Read got = read("n", 2);
  EXPECT_EQ(got.result, 0);
  EXPECT_EQ(got.size, 8u);
  EXPECT_EQ(got.bytes, "12345678");
}

TEST_F(Win32Registry, ValuesAreReplacedWithTheirTypes) {
  ASSERT_EQ(set("Name", REG_SZ, "text\0"s), 0);
  ASSERT_EQ(set("nAME", REG_DWORD, "1234"), 0);
  EXPECT_EQ(readWhole("Name").type, unsigned{REG_DWORD});
  EXPECT_EQ(m_manager.regDeleteValue(m_key.get(), "NAME"), 0);
  EXPECT_EQ(m_manager.regDeleteValue(m_key.get(), "NAME"), kFileNotFound);
  EXPECT_EQ(read("Name", 8).result, kFileNotFound);
}

TEST_F(Win32Registry, NullAndEmptyNamesAreTheDefaultValue) {
  EXPECT_EQ(read(nullptr, 0).result, kFileNotFound);
  ASSERT_EQ(set(nullptr, REG_SZ, "one\0"s), 0);
  EXPECT_EQ(readWhole("").bytes, "one\0"s);
  ASSERT_EQ(set("", REG_SZ, "two\0"s), 0);
  EXPECT_EQ(readWhole(nullptr).bytes, "two\0"s);
  EXPECT_EQ(m_manager.regDeleteValue(m_key.get(), nullptr), 0);
}

TEST_F(Win32Registry, NamesPassThroughTheSystemsCodePage) {
  const std::string name = LTLib::Platform::hasSystemRegistry() ? "n\xE4" : "n\xC3\xA4";
  ASSERT_EQ(set(name.c_str(), REG_SZ, "text\0"s), 0);
  EXPECT_TRUE(wide(u"n\u00E4") == u"text\0"s);
  EXPECT_EQ(readWhole(name.c_str()).bytes, "text\0"s);
  char found[16];
  unsigned int size = sizeof found;
  EXPECT_EQ(
      m_manager.regEnumValue(m_key.get(), 0, found, &size, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(std::string(found, size), name);
  EXPECT_EQ(m_manager.regDeleteValue(m_key.get(), found), 0);
}

TEST_F(Win32Registry, KeysAreMadeWithTheirParents) {
  void* key = nullptr;
  unsigned int disposition = 0;
  const std::string path = m_key.path("A\\B\\C");
  EXPECT_EQ(m_manager.regOpenKeyEx(m_key.root(), path.c_str(), 0, KEY_READ, &key), kFileNotFound);
  for (const unsigned int expected : {1u, 2u}) {
    EXPECT_EQ(m_manager.regCreateKeyEx(m_key.root(), path.c_str(), nullptr, 0, KEY_ALL_ACCESS, &key,
                                       &disposition),
              0);
    EXPECT_EQ(disposition, expected);
    EXPECT_EQ(m_manager.regCloseKey(key), 0);
  }
  key = open("a\\b\\c\\", KEY_READ);
  EXPECT_EQ(m_manager.regCloseKey(key), 0);
  EXPECT_EQ(m_manager.regCloseKey(key), kInvalidHandle);
  EXPECT_EQ(m_manager.regOpenKeyEx(m_key.root(), ("\\" + path).c_str(), 0, KEY_READ, &key),
            kBadPathname);
}

TEST_F(Win32Registry, KeysWithSubKeysAreNotDeleted) {
  void* inner = create("A\\B");
  ASSERT_EQ(m_manager.regSetValueEx(inner, "n", REG_DWORD,
                                    reinterpret_cast<const unsigned char*>("1234"), 4),
            0);
  EXPECT_EQ(m_manager.regDeleteKey(m_key.root(), m_key.path("A").c_str()), kAccessDenied);
  EXPECT_EQ(m_manager.regDeleteKey(m_key.root(), m_key.path("A\\B").c_str()), 0);
  EXPECT_EQ(m_manager.regDeleteKey(m_key.root(), m_key.path("A\\B").c_str()), kFileNotFound);
  EXPECT_EQ(m_manager.regDeleteKey(m_key.root(), m_key.path("A").c_str()), 0);
  EXPECT_EQ(m_manager.regDeleteKey(m_key.root(), nullptr), kInvalidParameter);

  char name[8] = "n";
  unsigned int size = sizeof name;
  unsigned int type = 0;
  EXPECT_EQ(m_manager.regQueryValueEx(inner, name, &type, nullptr, &size), kKeyDeleted);
  EXPECT_EQ(m_manager.regSetValueEx(inner, name, REG_NONE, nullptr, 0), kKeyDeleted);
  EXPECT_EQ(m_manager.regDeleteValue(inner, name), kKeyDeleted);
  EXPECT_EQ(m_manager.regEnumKey(inner, 0, name, sizeof name), kKeyDeleted);
  size = sizeof name;
  EXPECT_EQ(m_manager.regEnumValue(inner, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
            kKeyDeleted);
  EXPECT_EQ(m_manager.regCloseKey(inner), 0);
}

TEST_F(Win32Registry, EnumeratesSubKeys) {
  const std::vector<std::string> names = {"Alpha", "b", "Zeta"};
  for (const std::string& name : names) {
    m_manager.regCloseKey(create(name));
  }
  std::vector<std::string> seen;
  char name[16];
  unsigned int size = sizeof name;
  unsigned int index = 0;
  for (; m_manager.regEnumKeyEx(m_key.get(), index, name, &size) == 0; ++index) {
    seen.emplace_back(name, size);
    EXPECT_EQ(m_manager.regEnumKey(m_key.get(), index, name, size + 1), 0);
    EXPECT_EQ(name, seen.back());
    EXPECT_EQ(m_manager.regEnumKey(m_key.get(), index, name, size), kMoreData);
    const unsigned int tooSmall = size;
    EXPECT_EQ(m_manager.regEnumKeyEx(m_key.get(), index, name, &size), kMoreData);
    EXPECT_EQ(size, tooSmall);
    size = sizeof name;
  }
  EXPECT_EQ(seen, names);
  size = sizeof name;
  EXPECT_EQ(m_manager.regEnumKeyEx(m_key.get(), index, name, &size), kNoMoreItems);
  EXPECT_EQ(m_manager.regEnumKey(m_key.get(), index, name, sizeof name), kNoMoreItems);
}

TEST_F(Win32Registry, EnumeratesValues) {
  const std::map<std::string, std::string> values = {
      {"", "default\0"s}, {"a\\b", "x\0"s}, {"long name", "\0"s}};
  for (const auto& [name, text] : values) {
    ASSERT_EQ(set(name.c_str(), REG_EXPAND_SZ, text), 0);
  }
  std::map<std::string, std::string> seen;
  unsigned int index = 0;
  for (;; ++index) {
    char name[16];
    unsigned char data[16];
    unsigned int nameSize = sizeof name;
    unsigned int type = 0;
    unsigned int dataSize = sizeof data;
    const int result = m_manager.regEnumValue(m_key.get(), index, name, &nameSize, nullptr, &type,
                                              data, &dataSize);
    if (result != 0) {
      EXPECT_EQ(result, kNoMoreItems);
      break;
    }
    EXPECT_EQ(type, unsigned{REG_EXPAND_SZ});
    seen[{name, nameSize}] = {reinterpret_cast<char*>(data), dataSize};
    const unsigned int tooSmall = nameSize;
    EXPECT_EQ(m_manager.regEnumValue(m_key.get(), index, name, &nameSize, nullptr, nullptr, nullptr,
                                     nullptr),
              kMoreData);
    EXPECT_EQ(nameSize, tooSmall);
    nameSize = sizeof name;
    dataSize = 0;
    EXPECT_EQ(m_manager.regEnumValue(m_key.get(), index, name, &nameSize, nullptr, &type, data,
                                     &dataSize),
              kMoreData);
  }
  EXPECT_EQ(index, values.size());
  EXPECT_EQ(seen, values);
}

// Each operation with a handle that is none.
TEST_F(Win32Registry, BadHandlesAreTold) {
  void* closed = create("closed");
  EXPECT_EQ(m_manager.regCloseKey(closed), 0);
  char name[8] = "n";
  unsigned int number = 8;
  unsigned char data[8] = {};
  void* made = nullptr;
  for (void* bad : {static_cast<void*>(nullptr), closed}) {
    const int results[] = {
        m_manager.regCloseKey(bad),
        m_manager.regOpenKeyEx(bad, "x", 0, KEY_READ, &made),
        m_manager.regCreateKey(bad, "x", &made),
        m_manager.regCreateKeyEx(bad, "x", nullptr, 0, KEY_READ, &made, &number),
        m_manager.regQueryValueEx(bad, name, &number, data, &number),
        m_manager.regSetValueEx(bad, name, REG_SZ, data, 8),
        m_manager.regSetValueEx(bad, name, REG_BINARY, data, 8),
        m_manager.regEnumKeyEx(bad, 0, name, &number),
        m_manager.regEnumKey(bad, 0, name, sizeof name),
        m_manager.regEnumValue(bad, 0, name, &number, nullptr, nullptr, nullptr, nullptr),
        m_manager.regDeleteKey(bad, "x"),
        m_manager.regDeleteValue(bad, name),
    };
    for (std::size_t i = 0; i < std::size(results); ++i) {
      EXPECT_EQ(results[i], kInvalidHandle) << "operation " << i;
    }
  }
  EXPECT_EQ(made, nullptr);
}

TEST_F(Win32Registry, KeysOpenedForReadingRefuseChanges) {
  ASSERT_EQ(set("n", REG_DWORD, "1234"), 0);
  void* key = open("", KEY_READ);
  EXPECT_EQ(m_manager.regSetValueEx(key, "n", REG_NONE, nullptr, 0), kAccessDenied);
  EXPECT_EQ(m_manager.regDeleteValue(key, "n"), kAccessDenied);
  EXPECT_EQ(m_manager.regCloseKey(key), 0);
  EXPECT_EQ(readWhole("n").bytes, "1234");
}

TEST_F(Win32Registry, ArgumentsOfEnumerationsAreChecked) {
  ASSERT_EQ(set("n", REG_DWORD, "1234"), 0);
  char name[8];
  unsigned char data[8];
  unsigned int size = sizeof name;
  unsigned int reserved = 0;
  const int results[] = {
      m_manager.regEnumValue(m_key.get(), 0, nullptr, &size, nullptr, nullptr, nullptr, nullptr),
      m_manager.regEnumValue(m_key.get(), 0, name, nullptr, nullptr, nullptr, nullptr, nullptr),
      m_manager.regEnumValue(m_key.get(), 0, name, &size, &reserved, nullptr, nullptr, nullptr),
      m_manager.regEnumValue(m_key.get(), 0, name, &size, nullptr, nullptr, data, nullptr),
  };
  for (std::size_t i = 0; i < std::size(results); ++i) {
    EXPECT_EQ(results[i], kInvalidParameter) << "row " << i;
  }
}

TEST_F(Win32Registry, PredefinedHandlesOfEveryRootStayOpen) {
  for (int root = 1; root <= 5; ++root) {
    void* handle = predefinedRootHandle(static_cast<enumRegRoot>(root));
    void* key = nullptr;
    EXPECT_EQ(m_manager.regCloseKey(handle), 0) << root;
    EXPECT_EQ(m_manager.regOpenKeyEx(handle, "", 0, KEY_READ, &key), 0) << root;
    EXPECT_EQ(m_manager.regCloseKey(key), 0) << root;
  }
}

TEST_F(Win32Registry, NothingIsLeftToSave) {
  std::string pathname;
  EXPECT_EQ(m_manager.saveConfiguration(REG_ROOT_CURRENT_USER), 0);
  EXPECT_EQ(m_manager.saveConfiguration(REG_ROOT_CURRENT_USER, pathname), 0);
  EXPECT_EQ(pathname, "");
  EXPECT_EQ(m_manager.GetConfigurationPathname(REG_ROOT_CURRENT_USER), "");
}

}  // namespace
