#include "ltlib/platform/unicode.h"

#include <gtest/gtest.h>

namespace {

using LTLib::Platform::utf16ToUtf8;
using LTLib::Platform::utf8ToUtf16;
using std::string_literals::operator""s;

std::u16string wide(const std::string& text) {
  std::u16string made(utf8ToUtf16(text.data(), text.size(), nullptr, 0), u'?');
  EXPECT_EQ(utf8ToUtf16(text.data(), text.size(), made.data(), made.size()), made.size());
  return made;
}

std::string narrow(const std::u16string& text) {
  std::string made(utf16ToUtf8(text.data(), text.size(), nullptr, 0), '?');
  EXPECT_EQ(utf16ToUtf8(text.data(), text.size(), made.data(), made.size()), made.size());
  return made;
}

TEST(Unicode, ConvertsBothWaysAndReplacesWhatIsNoText) {
  const std::pair<std::string, std::u16string> texts[] = {
      {"a\0z"s, u"a\0z"s},
      {"\x7F\xC2\x80\xDF\xBF", u"\u007F\u0080\u07FF"},
      {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\u0800\uD7FF\uE000\uFFFF"},
      {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
  };
  for (const auto& [bytes, units] : texts) {
    EXPECT_TRUE(wide(bytes) == units) << bytes;
    EXPECT_EQ(narrow(units), bytes);
  }
  EXPECT_TRUE(wide("\x80.\xFF.\xE2\x82.\xC0\x80.\xF0\x9F\x98") ==
              u"\uFFFD.\uFFFD.\uFFFD.\uFFFD\uFFFD.\uFFFD");
  // How many replacements become of what is too long, a surrogate or too large is the system's own.
  for (const char* fault :
       {"\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}) {
    EXPECT_EQ(wide(fault).find_first_not_of(u'\uFFFD'), std::u16string::npos);
  }
  EXPECT_EQ(narrow(u".\xDE00\xDE00.\xD83D\xD83D\xDE00\xD83D"),
            ".\xEF\xBF\xBD\xEF\xBF\xBD.\xEF\xBF\xBD\xF0\x9F\x98\x80\xEF\xBF\xBD");
}

// A character that does not fit whole is left out whole.
TEST(Unicode, FillsWhatThereIsRoomFor) {
  std::string bytes = "....";
  EXPECT_EQ(utf16ToUtf8(u"a\u20ACb", 3, bytes.data(), 3), 0u);
  EXPECT_EQ(bytes, "a...");
  std::u16string units = u"...";
  EXPECT_EQ(utf8ToUtf16("abc", 3, units.data(), 2), 0u);
  EXPECT_TRUE(units == u"ab.");
}

}  // namespace
