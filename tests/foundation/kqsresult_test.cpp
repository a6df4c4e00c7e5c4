#include "ltlib/foundation/kqsresult.h"

#include <gtest/gtest.h>

#include <array>
#include <new>
#include <sstream>

#include "tests/support/recording_tracer.h"

namespace {

using LTLib::kFailure;
using LTLib::resultFromBits;
using LTLib::Testing::takeTraces;

TEST(QSResultCodec, EncodesFieldsAsTheyCome) {
  QSResultCodec codec;
  EXPECT_EQ(codec.Encode(1, 2, 0, 46), resultFromBits(0x8004102Eu));
  EXPECT_EQ(codec.Encode(0, 0, 0, 0), resultFromBits(0x00040000u));
  EXPECT_EQ(codec.Encode(3, 31, 3, 255), resultFromBits(0x8004FBFFu));
  EXPECT_EQ(codec.Encode(2, 32, 4, 256), resultFromBits(0x00050500u));
}

// Error, project, module and code.
using Fields = std::array<unsigned short, 4>;

TEST(QSResultCodec, TakesApartOnlyMarkedCodes) {
  struct Case {
    std::uint32_t bits;
    bool marked;
    Fields fields;
  };
  const Case cases[] = {
      {0x8004102Eu, true, {1, 2, 0, 46}},
      {0x80070005u, true, {1, 0, 0, 5}},
      {0x0004FFFFu, true, {0, 31, 3, 255}},
      {0x80004005u, false, {1, 8, 0, 5}},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << row.bits);
    const QSResultCodec codec(resultFromBits(row.bits));
    EXPECT_EQ((Fields{codec.Error(), codec.Project(), codec.Module(), codec.Code()}), row.fields);
    const Fields untouched = {77, 77, 77, 77};
    Fields out = untouched;
    EXPECT_EQ(codec.Decode(out[0], out[1], out[2], out[3]), row.marked ? 0 : kFailure);
    EXPECT_EQ(out, row.marked ? row.fields : untouched);
  }
}

// What each form of construction leaves as message and writes to the tracer.
TEST(QSException, MessageAndTraceOfEachForm) {
  const std::string generic = "Generic application exception: On file: ";
  const std::string nowhere = "No specific file info:0";
  const std::string noMessage = "'No specific error message' constructed at : ";
  const std::string fromResult = "from QSResult : constructed at : " + nowhere;
  const char* const null = nullptr;
  std::stringstream stream("streamed");
  std::ostringstream outputOnly("lost");
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
      {{"f", 4, kFailure, ""}, generic + "f:4", "QSException '' constructed at : f:4"},
      {{"f", 5, kFailure, stream}, "streamed", "QSException 'streamed' constructed at : f:5"},
      {{"f", 6, kFailure, stream}, generic + "f:6", "QSException " + noMessage + "f:6"},
      {{"f", 7, kFailure, outputOnly}, generic + "f:7", "QSException " + noMessage + "f:7"},
      {kFailure, generic + nowhere, "QSException " + fromResult},
      {{kFailure, "held"}, "held", "QSException 'held' " + fromResult},
      {{kFailure, null}, generic + nowhere, "QSException '' " + fromResult},
  };
  const std::vector<std::string> lines = takeTraces();
  ASSERT_EQ(lines.size(), std::size(cases));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(lines[i], "0 kqsresult QSRESULT: QSException " + cases[i].trace);
    EXPECT_EQ(cases[i].exception.What(), cases[i].what) << cases[i].trace;
    EXPECT_EQ(cases[i].exception.what(), cases[i].what) << cases[i].trace;
    EXPECT_EQ(cases[i].exception.Result(), kFailure);
  }
}

TEST(QSException, CopiesAndAssignmentsTraceNothingAndDestructorsAll) {
  (void)takeTraces();
  {
    const QSException first("kfile", 1, LTLib::kNotFound, "one");
    const QSException copy(first);
    QSException other(kFailure);
    other = copy;
    const QSException& same = other;
    other = same;
    EXPECT_EQ(takeTraces().size(), 2u);
    EXPECT_EQ(other.What(), "one");
    EXPECT_EQ(other.Result(), LTLib::kNotFound);
    EXPECT_EQ(other.Line(), 1);
  }
  const std::string destructed = "2 kqsresult QSRESULT: ~QSException QSException destructed";
  EXPECT_EQ(takeTraces(), std::vector<std::string>(3, destructed));
}

struct Described : QSException {
  using QSException::QSException;
  std::string DoWhat() const override {
    ++asked;
    return text;
  }
  std::string text = "described";
  mutable int asked = 0;
};

TEST(QSException, ADescriptionServesWithoutAMessageAndIsKeptByWhat) {
  const Described silent(kFailure);
  EXPECT_EQ(silent.What() + silent.What(), "describeddescribed");
  EXPECT_EQ(silent.asked, 2);
  const char* const text = silent.what();
  EXPECT_EQ(silent.what(), text);
  EXPECT_EQ(silent.What(), "described");
  EXPECT_EQ(silent.asked, 3);

  const Described spoken(kFailure, "told");
  EXPECT_EQ(spoken.what() + spoken.What(), "toldtold");
  EXPECT_EQ(spoken.asked, 0);

  Described empty(kFailure);
  empty.text = "";
  EXPECT_EQ(empty.what() + std::string(empty.what()), "");
  EXPECT_EQ(empty.asked, 2);
}

struct Speechless : QSException {
  using QSException::QSException;
  std::string DoWhat() const override { throw std::bad_alloc(); }
};

TEST(QSException, ADescriptionThatThrowsLeavesAPlainText) {
  const Speechless exception(kFailure);
  EXPECT_STREQ(exception.what(), "Generic application exception");
  EXPECT_THROW(static_cast<void>(exception.What()), std::bad_alloc);
}

}  // namespace
