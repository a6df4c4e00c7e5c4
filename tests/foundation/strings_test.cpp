#include <gtest/gtest.h>

#include <climits>
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
      {"ab-ab", "ab", "", "ab-ab"},
      {"ab-ab", "", "x", "ab-ab"},
      {"aaa", "a", "aa", "aaaaaa"},
      {"aaaaa", "aa", "b", "bba"},
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

TEST(LTString, GivesPartsAndWritesNumbers) {
  LTString text("abc");
  EXPECT_EQ(text.substr(1, 100).str(), "bc");
  EXPECT_EQ(text.substr(3, 5), LTString(nullptr));
  EXPECT_THROW(text.substr(4, 0), std::out_of_range);
  text.AppendNumber(INT_MIN);
  EXPECT_EQ(text.str(), "abc-2147483648");
}

TEST(StreamFormat, TheFormatThatIsHeldComesBackOnce) {
  std::ostringstream stream;
  {
    qs_stream_fmt_sentry guard(stream);
    stream << std::hex << std::setfill('*') << std::setprecision(3) << std::setw(9);
    guard.Restore();
    stream << 1.0 / 3.0 << std::setw(3) << 10 << std::hex;
  }
  stream << 10;
  EXPECT_EQ(stream.str(), "0.333333 10a") << "a restored guard holds nothing";
  {
    qs_stream_fmt_sentry guard(stream);
    guard.Restore();
    guard.Save();
    stream << std::dec;
  }
  stream << 10;
  EXPECT_EQ(stream.str(), "0.333333 10aa");
}

}  // namespace
