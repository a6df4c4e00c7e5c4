#include "ltlib/foundation/lt_string.h"

#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <stdexcept>

namespace {

using namespace std::string_literals;

TEST(LTString, ReplacesTexts) {
  struct Case {
    const char* text;
    const char* find;
    const char* with;
    const char* result;
  };
  const Case cases[] = {
      {"ab-ab-ab", "ab", "xy", "xy-xy-xy"},
      {"ab-ab", "ab", "", "ab-ab"},
      {"ab-ab", "", "x", "ab-ab"},
      {"aaa", "a", "aa", "aaaaaa"},
      {"aaaaa", "aa", "b", "bba"},
      {"abcabc", "abc", "d", "dd"},
      {"ab", "abc", "d", "ab"},
      {"", "a", "b", ""},
  };
  for (const Case& row : cases) {
    LTString text(row.text);
    LTString find(row.find);
    LTString with(row.with);
    text.replace(find, with);
    EXPECT_STREQ(text.c_str(), row.result) << row.text << ' ' << row.find;
  }
  LTString self("ab");
  self.replace(self, LTString("xyz"));
  EXPECT_EQ(self.str(), "xyz");
  self.replace(LTString("y"), self);
  EXPECT_EQ(self.str(), "xxyzz");
}

TEST(LTString, ReplacesCharactersZeroBytesIncluded) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""}, {"xyz", "xyz"}, {"aba", "bbb"}, {"a\0a"s, "b\0b"s}};
  for (const auto& [before, after] : cases) {
    LTString text(before);
    text.replace('a', 'b');
    EXPECT_EQ(text, LTString(after));
  }
  LTString zeros("a\0b\0"s);
  zeros.replace('\0', '-');
  EXPECT_EQ(zeros.str(), "a-b-");
}

TEST(LTString, GivesParts) {
  const LTString text("abc");
  EXPECT_EQ(text.substr(1, 1).str(), "b");
  EXPECT_EQ(text.substr(1, 100).str(), "bc");
  EXPECT_EQ(text.substr(3, 5).str(), "");
  EXPECT_THROW(text.substr(4, 0), std::out_of_range);
  EXPECT_EQ(LTString(nullptr), LTString());
  EXPECT_EQ(text.data(), text.c_str());
}

TEST(LTString, ErasesButKeepsItsStorage) {
  LTString text(std::string(1000, 'x'));
  const char* const storage = text.data();
  text.erase();
  EXPECT_STREQ(text.c_str(), "");
  EXPECT_TRUE(text.data() == storage);
}

struct Grouping : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(LTString, WritesNumbersWithAndWithoutTheLocale) {
  EXPECT_EQ(LTString::intToString(std::numeric_limits<long long>::min()), "-9223372036854775808");
  EXPECT_EQ(LTString::intToString(std::numeric_limits<long long>::max()), "9223372036854775807");
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
  LTString text("n=");
  text.AppendNumber(-12345);
  text.AppendNumber(0);
  EXPECT_EQ(text.str(), "n=-123450");
  EXPECT_EQ(LTString::intToString(-12345), "-12.345");
  std::locale::global(before);
}

}  // namespace
