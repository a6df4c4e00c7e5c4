#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <stdexcept>

#include "ltlib/foundation/lt_string.h"
#include "ltlib/foundation/stream_format.h"

namespace {

using namespace std::string_literals;

TEST(LTString, ReplacesTextsAndCharacters) {
  struct Case {
    const char *text, *find, *with, *result;
  };
  const Case cases[] = {
      {"ab-ab-ab", "ab", "xy", "xy-xy-xy"}, {"ab-ab", "ab", "", "ab-ab"},
      {"ab-ab", "", "x", "ab-ab"},          {"aaa", "a", "aa", "aaaaaa"},
      {"aaaaa", "aa", "b", "bba"},          {"ab", "abc", "d", "ab"},
  };
  for (const Case& row : cases) {
    LTString text(row.text);
    text.replace(LTString(row.find), LTString(row.with));
    EXPECT_EQ(text.str(), row.result) << row.text << ' ' << row.find;
  }
  LTString self("ab");
  self.replace(self, LTString("xyz"));
  self.replace(LTString("y"), self);
  EXPECT_EQ(self.str(), "xxyzz");
  LTString bytes("a\0ba"s);
  bytes.replace('a', 'b');
  EXPECT_EQ(bytes.str(), "b\0bb"s);
}

TEST(LTString, GivesPartsWritesNumbersAndErasesButKeepsItsStorage) {
  LTString text("abc");
  EXPECT_EQ(text.substr(1, 1).str(), "b");
  EXPECT_EQ(text.substr(1, 100).str(), "bc");
  EXPECT_EQ(text.substr(3, 5), LTString(nullptr));
  EXPECT_THROW(text.substr(4, 0), std::out_of_range);
  text.AppendNumber(-12);
  text.AppendNumber(0);
  EXPECT_EQ(text.str(), "abc-120");
  EXPECT_EQ(LTString::intToString(INT64_MIN), "-9223372036854775808");

  text = std::string(1000, 'x');
  const char* const storage = text.data();
  text.erase();
  EXPECT_STREQ(text.c_str(), "");
  EXPECT_TRUE(text.data() == storage);
}

std::string formatOf(const std::ostream& stream) {
  std::ostringstream shown;
  shown << stream.fill() << stream.flags() << ' ' << stream.precision() << ' ' << stream.width();
  return shown.str();
}

TEST(StreamFormat, TheFormatThatIsHeldComesBackOnce) {
  std::ostringstream stream;
  const std::string before = formatOf(stream);
  const auto disturbed = [&stream] {
    stream << std::hex << std::setfill('*') << std::setprecision(3) << std::setw(9);
    return formatOf(stream);
  };
  {
    qs_stream_fmt_sentry guard(stream);
    EXPECT_NE(disturbed(), before);
    guard.Restore();
    EXPECT_EQ(formatOf(stream), before);
    disturbed();
  }
  const std::string left = disturbed();
  EXPECT_NE(left, before) << "a restored guard holds nothing";
  {
    qs_stream_fmt_sentry guard(stream);
    guard.Restore();
    guard.Save();
    stream << std::oct << std::setw(1);
  }
  EXPECT_EQ(formatOf(stream), left);
}

}  // namespace
