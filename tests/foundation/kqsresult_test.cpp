#include "ltlib/foundation/kqsresult.h"

#include <gtest/gtest.h>

#include <array>
#include <new>
#include <sstream>

#include "ltlib/diagnosis.h"
#include "tests/support/recording_tracer.h"

namespace {

using LTLib::kFailure;
using LTLib::resultFromBits;
using LTLib::Testing::takeTraces;

// Error, project, module and code.
using Fields = std::array<unsigned short, 4>;

Fields decoded(QSResult code, QSResult expected) {
  Fields out = {77, 77, 77, 77};
  EXPECT_EQ(QSResultCodec(code).Decode(out[0], out[1], out[2], out[3]), expected);
  return out;
}

TEST(QSResultCodec, PacksFieldsAsTheyComeAndTakesMarkedCodesApart) {
  struct Case {
    Fields given;
    std::uint32_t bits;
    Fields read;
  };
  const Case cases[] = {
      {{1, 2, 0, 46}, 0x8004102Eu, {1, 2, 0, 46}},
      {{0, 0, 0, 0}, 0x00040000u, {0, 0, 0, 0}},
      {{3, 31, 3, 255}, 0x8004FBFFu, {1, 31, 3, 255}},
      {{2, 32, 4, 256}, 0x00050500u, {0, 0, 1, 0}},
  };
  for (const Case& row : cases) {
    QSResultCodec codec;
    EXPECT_EQ(codec.Encode(row.given[0], row.given[1], row.given[2], row.given[3]),
              resultFromBits(row.bits));
    EXPECT_EQ(decoded(resultFromBits(row.bits), 0), row.read) << row.bits;
  }
  EXPECT_EQ(decoded(kFailure, kFailure), (Fields{77, 77, 77, 77}));
}

// What each form of construction leaves as message and writes to the tracer.
TEST(QSException, MessageAndTraceOfEachForm) {
  const std::string generic = "Generic application exception: On file: ";
  const std::string nowhere = "No specific file info:0";
  const std::string noMessage = "'No specific error message' constructed at : ";
  const std::string fromResult = "from QSResult : constructed at : " + nowhere;
  const char* const null = nullptr;
  std::stringstream stream("streamed");
  struct Case {
    QSException exception;
    std::string what, trace;
  };
  (void)takeTraces();
  const Case cases[] = {
      {{"f", 1, kFailure}, generic + "f:1", "QSLT: QSException constructed at f:1"},
      {{null, 0, kFailure}, generic + nowhere, "QSLT: QSException constructed at " + nowhere},
      {{"f", 2, kFailure, "broken"}, "broken", "QSException 'broken' constructed at : f:2"},
      {{"f", 3, kFailure, null}, generic + "f:3", "QSException " + noMessage + "f:3"},
      {{"f", 5, kFailure, stream}, "streamed", "QSException 'streamed' constructed at : f:5"},
      {{"f", 6, kFailure, stream}, generic + "f:6", "QSException " + noMessage + "f:6"},
      {kFailure, generic + nowhere, "QSException " + fromResult},
      {{kFailure, "held"}, "held", "QSException 'held' " + fromResult},
      {{kFailure, null}, generic + nowhere, "QSException '' " + fromResult},
  };
  const std::vector<std::string> lines = takeTraces();
  ASSERT_EQ(lines.size(), std::size(cases));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(lines[i], "0 kqsresult QSRESULT: QSException " + cases[i].trace);
    EXPECT_EQ(cases[i].exception.what(), cases[i].what) << cases[i].trace;
  }
}

TEST(QSException, CopiesAndAssignmentsTraceNothingAndDestructorsAll) {
  (void)takeTraces();
  {
    const QSException first("kfile", 1, kFailure, "one");
    const QSException copy(first);
    QSException other(kFailure);
    other = copy;
    EXPECT_EQ(takeTraces().size(), 2u);
    EXPECT_EQ(other.What(), "one");
  }
  const std::string destructed = "2 kqsresult QSRESULT: ~QSException QSException destructed";
  EXPECT_EQ(takeTraces(), std::vector<std::string>(3, destructed));
}

// Gives its text, and throws without one.
struct Described : QSException {
  using QSException::QSException;
  std::string DoWhat() const override { return text != nullptr ? text : throw std::bad_alloc(); }
  const char* text = "described";
};

TEST(QSException, IsShownInALineWithResultTextAndPlace) {
  struct Case {
    Described exception;
    const char* shown;
  };
  const Case cases[] = {
      {{"f", 1, kFailure, "broken"}, "failed (0x80004005): broken [f:1]"},
      {{LTLib::kNotAvailable, "none"}, "not available (0x8004102F): none"},
      {LTLib::resultFromSystemError(5), "system error 5 (0x80070005): described"},
      {LTLib::kInitialised, "initialised (0x00041000): described"},
      {resultFromBits(0x80070000u), "failed (0x80070000): described"},
      {LTLib::kSuccess, "succeeded (0x00000000): described"},
  };
  for (const Case& row : cases) {
    std::ostringstream stream;
    stream << row.exception;
    EXPECT_EQ(stream.str(), row.shown);
  }
}

TEST(QSException, ADescriptionServesWithoutAMessageAndIsKeptByWhat) {
  const Described silent(kFailure);
  const char* const text = silent.what();
  EXPECT_EQ(silent.What(), "described");
  EXPECT_EQ(silent.what(), text);

  Described speechless(kFailure);
  speechless.text = nullptr;
  EXPECT_STREQ(speechless.what(), "Generic application exception");
  EXPECT_THROW(static_cast<void>(speechless.What()), std::bad_alloc);
}

}  // namespace
