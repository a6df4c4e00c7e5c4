// Values written by the library and read by others, and the other way round: by the plain functions
// of the system, and by its own tool.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/private_key.h"
#include "tests/support/temp_folder.h"

namespace {

using std::string_literals::operator""s;

std::string outputOf(const std::string& command) {
  std::FILE* pipe = _popen(command.c_str(), "r");
  std::string text;
  for (int byte = std::fgetc(pipe); byte != EOF; byte = std::fgetc(pipe)) {
    text += static_cast<char>(byte);
  }
  EXPECT_EQ(_pclose(pipe), 0) << command;
  return text;
}

std::string wide(const std::u16string& text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

// The library's bytes, the system's, and what the system's tool shows; none where it cannot.
struct Row {
  const char* name;
  unsigned int type;
  std::string ours;
  std::string systems;
  const char* shown;
};

// Both directions give these.
std::vector<Row> commonRows() {
  const std::string largeText(1 << 20, 'x');
  std::vector<Row> rows = {
      {"text", REG_SZ, "some words\0"s, wide(u"some words\0"s), "REG_SZ    some words"},
      {"empty text", REG_SZ, "\0"s, wide(u"\0"s), "REG_SZ    "},
      {"no terminator", REG_SZ, "abc", wide(u"abc"), "REG_SZ    abc"},
      {"latin", REG_SZ, "\xC3\xA4\0"s, wide(u"\u00E4\0"s), nullptr},
      {"beyond", REG_SZ, "\xE2\x82\xAC\xF0\x9F\x98\x80\0"s, wide(u"\u20AC\xD83D\xDE00\0"s),
       nullptr},
      {"path", REG_EXPAND_SZ, "%TEMP%\0"s, wide(u"%TEMP%\0"s), "REG_EXPAND_SZ    %TEMP%"},
      {"link", REG_LINK, "\xC3\xA4 target\0"s, wide(u"\u00E4 target\0"s), nullptr},
      {"list", REG_MULTI_SZ, "one\0two\0\0"s, wide(u"one\0two\0\0"s), "REG_MULTI_SZ    one\\0two"},
      {"open list", REG_MULTI_SZ, "one\0tw"s, wide(u"one\0tw"s), nullptr},
      {"number", REG_DWORD, "\x2A\0\0\0"s, "\x2A\0\0\0"s, "REG_DWORD    0x2a"},
      {"odd number", REG_DWORD, "\x01\x02\x03", "\x01\x02\x03", nullptr},
      {"long number", REG_QWORD, "\1\2\3\4\5\6\7\x08"s, "\1\2\3\4\5\6\7\x08"s, nullptr},
      {"bytes", REG_BINARY, "\x01\xAB\0"s, "\x01\xAB\0"s, "REG_BINARY    01AB00"},
      {"no bytes", REG_BINARY, "", "", "REG_BINARY    "},
      {"none", REG_NONE, "\x07", "\x07", "REG_NONE    07"},
      {"other", 0x12345, "\x01", "\x01", nullptr},
      {"large text", REG_SZ, "\xC3\xA4" + largeText + '\0',
       wide(u"\u00E4" + std::u16string(1 << 20, u'x') + u'\0'), nullptr},
      {"large bytes", REG_BINARY, largeText, largeText, nullptr},
  };
  return rows;
}

class SystemRegistry : public testing::Test {
 protected:
  void set(const char* name, unsigned int type, const std::string& bytes) {
    EXPECT_EQ(m_key.manager().regSetValueEx(m_key.get(), name, type,
                                            reinterpret_cast<const unsigned char*>(bytes.data()),
                                            static_cast<unsigned int>(bytes.size())),
              0)
        << name;
  }

  void expectRead(std::string name, unsigned int type, const std::string& bytes) {
    unsigned int found = 0;
    unsigned int size = 0;
    EXPECT_EQ(m_key.manager().regQueryValueEx(m_key.get(), name.data(), &found, nullptr, &size), 0);
    EXPECT_EQ(found, type) << name;
    ASSERT_EQ(size, bytes.size()) << name;
    std::string read(size, '.');
    EXPECT_EQ(m_key.manager().regQueryValueEx(m_key.get(), name.data(), &found,
                                              reinterpret_cast<unsigned char*>(read.data()), &size),
              0);
    EXPECT_TRUE(read == bytes) << name;
  }

  // A NUL that happens to follow the bytes would be taken for their terminator.
  void plainSet(const char* name, DWORD type, const std::string& bytes) {
    const std::string guarded = bytes + "\xFF\xFF";
    EXPECT_EQ(RegSetValueExW(plainKey(), wideName(name).c_str(), 0, type,
                             reinterpret_cast<const BYTE*>(guarded.data()),
                             static_cast<DWORD>(bytes.size())),
              0)
        << name;
  }

  void expectPlain(const char* name, DWORD type, const std::string& bytes) {
    std::string found(bytes.size() + 2, '.');
    auto size = static_cast<DWORD>(found.size());
    DWORD foundType = 77;
    EXPECT_EQ(RegQueryValueExW(plainKey(), wideName(name).c_str(), nullptr, &foundType,
                               reinterpret_cast<BYTE*>(found.data()), &size),
              0)
        << name;
    EXPECT_EQ(foundType, type) << name;
    EXPECT_TRUE(found.substr(0, size) == bytes) << name;
  }

  [[nodiscard]] HKEY plainKey() const { return static_cast<HKEY>(m_key.get()); }
  static std::wstring wideName(const std::string& name) { return {name.begin(), name.end()}; }
  [[nodiscard]] std::string quotedPath() const { return "\"HKCU\\" + m_key.path() + '"'; }

  LTLib::Testing::PrivateKey m_key;
};

TEST_F(SystemRegistry, OthersReadWhatTheLibraryWrote) {
  const std::vector<Row> rows = commonRows();
  for (const Row& row : rows) {
    set(row.name, row.type, row.ours);
    expectPlain(row.name, row.type, row.systems);
  }
  for (const char* name : {"large text", "large bytes"}) {
    EXPECT_EQ(m_key.manager().regDeleteValue(m_key.get(), name), 0);
  }
  const std::string all = outputOf("reg query " + quotedPath());
  for (const Row& row : rows) {
    if (row.shown != nullptr) {
      const std::string line = "    "s + row.name + "    " + row.shown + '\n';
      EXPECT_NE(all.find(line), std::string::npos) << line << " in " << all;
    }
  }
}

TEST_F(SystemRegistry, TheLibraryReadsWhatOthersWrote) {
  for (const Row& row : commonRows()) {
    plainSet(row.name, row.type, row.systems);
    expectRead(row.name, row.type, row.ours);
  }
  plainSet("odd bytes", REG_SZ, "a\0b"s);
  expectRead("odd bytes", REG_SZ, "\0"s);
  plainSet("no text", REG_EXPAND_SZ, "");
  expectRead("no text", REG_EXPAND_SZ, "");
  plainSet("half a pair", REG_SZ, wide(u"\xD83D\0"s));
  expectRead("half a pair", REG_SZ, "\xEF\xBF\xBD\0"s);

  const struct {
    const char* name;
    const char* arguments;
    unsigned int type;
    std::string ours;
  } added[] = {
      {"text", "/t REG_SZ /d \"some words\"", REG_SZ, "some words\0"s},
      {"path", "/t REG_EXPAND_SZ /d C:\\folder", REG_EXPAND_SZ, "C:\\folder\0"s},
      {"list", "/t REG_MULTI_SZ /d one\\0two", REG_MULTI_SZ, "one\0two\0\0"s},
      {"number", "/t REG_DWORD /d 42", REG_DWORD, "\x2A\0\0\0"s},
      {"bytes", "/t REG_BINARY /d 01AB00", REG_BINARY, "\x01\xAB\0"s},
      {"none", "/t REG_NONE /d 07", REG_NONE, wide(u"07\0"s)},
  };
  for (const auto& row : added) {
    (void)outputOf("reg add " + quotedPath() + " /f /v " + row.name + ' ' + row.arguments);
    expectRead(row.name, row.type, row.ours);
  }
}

// The tool's files hold UTF-16, past every code page of a console.
TEST_F(SystemRegistry, TextsBeyondAsciiCrossTheToolsFiles) {
  const LTLib::Testing::TempFolder folder;
  const std::string file = folder.path("key.reg");
  set("beyond", REG_SZ, "\xE2\x82\xAC\xF0\x9F\x98\x80\0"s);
  (void)outputOf("reg export " + quotedPath() + " \"" + file + "\" /y");
  EXPECT_NE(LTLib::Testing::readFile(file).find(wide(u"\"beyond\"=\"\u20AC\xD83D\xDE00\"")),
            std::string::npos);
  EXPECT_EQ(m_key.manager().regDeleteValue(m_key.get(), "beyond"), 0);
  (void)outputOf("reg import \"" + file + '"');
  expectRead("beyond", REG_SZ, "\xE2\x82\xAC\xF0\x9F\x98\x80\0"s);
}

}  // namespace
