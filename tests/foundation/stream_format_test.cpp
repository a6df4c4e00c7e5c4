#include "ltlib/foundation/stream_format.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

namespace {

std::string formatted(std::ostream& stream) {
  std::ostringstream shown;
  shown << stream.fill() << ' ' << static_cast<unsigned>(stream.flags()) << ' '
        << stream.precision() << ' ' << stream.width();
  return shown.str();
}

void disturb(std::ostream& stream) {
  stream << std::hex << std::setfill('*') << std::setprecision(3) << std::setw(9);
}

TEST(StreamFormat, ComesBackAtTheEndOfTheScope) {
  std::ostringstream stream;
  stream << std::setw(4) << std::setprecision(8);
  const std::string before = formatted(stream);
  {
    const qs_stream_fmt_sentry guard(stream);
    disturb(stream);
    EXPECT_NE(formatted(stream), before);
  }
  EXPECT_EQ(formatted(stream), before);
}

TEST(StreamFormat, RestoreEndsAndSaveMovesThePointOfReturn) {
  std::ostringstream stream;
  const std::string before = formatted(stream);
  std::string disturbed;
  {
    qs_stream_fmt_sentry guard(stream);
    disturb(stream);
    disturbed = formatted(stream);
    guard.Restore();
    EXPECT_EQ(formatted(stream), before);
    disturb(stream);
    guard.Restore();
    EXPECT_EQ(formatted(stream), disturbed);
  }
  EXPECT_EQ(formatted(stream), disturbed);
  {
    qs_stream_fmt_sentry guard(stream);
    stream << std::dec;
    guard.Save();
    disturb(stream);
  }
  EXPECT_EQ(stream.flags() & std::ios_base::basefield, std::ios_base::dec);
  EXPECT_EQ(stream.fill(), '*');
}

TEST(StreamFormat, CopiesBothWays) {
  std::ostringstream from;
  std::ostringstream to;
  disturb(from);
  from.width(-1);
  from.precision((1LL << 40) + 5);
  qs_stream_fmt_sentry::qs_ios_fmt record{};
  qs_stream_fmt_sentry::CopyFormat(record, from);
  EXPECT_EQ(record.width, -1);
  EXPECT_EQ(record.precision, 5);
  qs_stream_fmt_sentry::CopyFormat(to, record);
  from.precision(5);
  EXPECT_EQ(formatted(to), formatted(from));
}

}  // namespace
