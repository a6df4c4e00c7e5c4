// Values written by the library and read by others, and the other way round.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <string>

#include "tests/support/private_key.h"

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

class SystemRegistry : public testing::Test {
 protected:
  void set(const char* name, unsigned int type, const std::string& bytes) {
    EXPECT_EQ(m_key.manager().regSetValueEx(m_key.get(), name, type,
                                            reinterpret_cast<const unsigned char*>(bytes.data()),
                                            static_cast<unsigned int>(bytes.size())),
              0);
  }

  std::string read(std::string name) {
    unsigned int type = 0;
    unsigned int size = 64;
    std::string bytes(size, '\0');
    EXPECT_EQ(
        m_key.manager().regQueryValueEx(m_key.get(), name.data(), &type,
                                        reinterpret_cast<unsigned char*>(bytes.data()), &size),
        0);
    return bytes.substr(0, size);
  }

  [[nodiscard]] std::string quotedPath() const { return "\"HKCU\\" + m_key.path() + '"'; }

  LTLib::Testing::PrivateKey m_key;
};

TEST_F(SystemRegistry, TheToolShowsWhatTheLibraryWrote) {
  set("text", REG_SZ, "some words\0"s);
  set("number", REG_DWORD, "\x2A\0\0\0"s);
  set("bytes", REG_BINARY, "\x01\xAB"s);
  set("list", REG_MULTI_SZ, "one\0two\0\0"s);
  set("path", REG_EXPAND_SZ, "%TEMP%\0"s);
  const std::string shown = outputOf("reg query " + quotedPath());
  for (const char* part : {"some words", "REG_SZ", "0x2a", "01AB", "one\\0two", "%TEMP%"}) {
    EXPECT_NE(shown.find(part), std::string::npos) << part << " in " << shown;
  }
}

TEST_F(SystemRegistry, TheLibraryReadsWhatTheToolWrote) {
  const std::string add = "reg add " + quotedPath() + " /f ";
  (void)outputOf(add + "/v text /t REG_SZ /d \"some words\"");
  (void)outputOf(add + "/v number /t REG_DWORD /d 42");
  (void)outputOf(add + "/v list /t REG_MULTI_SZ /d one\\0two");
  EXPECT_EQ(read("text"), "some words\0"s);
  EXPECT_EQ(read("number"), "\x2A\0\0\0"s);
  EXPECT_EQ(read("list"), "one\0two\0\0"s);
}

TEST_F(SystemRegistry, WideFunctionsMeetUtf8) {
  const std::string utf8 = "\xC3\xA4\xF0\x9F\x98\x80\0"s;
  const std::wstring wide = L"\u00E4\xD83D\xDE00\0"s;
  const auto key = static_cast<HKEY>(m_key.get());
  const auto bytes = static_cast<DWORD>(wide.size() * sizeof(wchar_t));
  set("ours", REG_SZ, utf8);
  std::wstring found(16, L'?');
  DWORD size = 32;
  DWORD type = 0;
  EXPECT_EQ(
      RegQueryValueExW(key, L"ours", nullptr, &type, reinterpret_cast<BYTE*>(found.data()), &size),
      0);
  EXPECT_EQ(type, DWORD{REG_SZ});
  EXPECT_TRUE(found.substr(0, size / 2) == wide);
  EXPECT_EQ(RegSetValueExW(key, L"theirs", 0, REG_LINK, reinterpret_cast<const BYTE*>(wide.data()),
                           bytes),
            0);
  EXPECT_EQ(read("theirs"), utf8);
}

}  // namespace
