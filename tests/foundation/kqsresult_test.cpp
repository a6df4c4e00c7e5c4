#include "ltlib/foundation/kqsresult.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/recording_tracer.h"

namespace {

using LTLib::resultFromBits;
using LTLib::Testing::TraceLine;
using LTLib::Testing::TraceRecording;

TEST(QSResultCodec, EncodesFieldsAsTheyCome) {
  struct Case {
    unsigned short error, project, module, code;
    std::uint32_t bits;
  };
  const Case cases[] = {
      {1, 2, 0, 46, 0x8004102Eu},   {0, 2, 0, 0, 0x00041000u},  {0, 0, 0, 0, 0x00040000u},
      {1, 31, 3, 255, 0x8004FBFFu}, {0, 32, 0, 0, 0x00050000u}, {0, 0, 4, 0, 0x00040400u},
      {0, 0, 0, 256, 0x00040100u},  {2, 0, 0, 0, 0x00040000u},  {3, 0, 0, 0, 0x80040000u},
  };
  for (const Case& row : cases) {
    QSResultCodec codec;
    EXPECT_EQ(codec.Encode(row.error, row.project, row.module, row.code), resultFromBits(row.bits))
        << std::hex << row.bits;
  }
}

TEST(QSResultCodec, TakesApartOnlyMarkedCodes) {
  struct Case {
    std::uint32_t bits;
    bool marked;
    unsigned short error, project, module, code;
  };
  const Case cases[] = {
      {0x8004102Eu, true, 1, 2, 0, 46}, {0x80070005u, true, 1, 0, 0, 5},
      {0x80360001u, true, 1, 0, 0, 1},  {0x0004FBFFu, true, 0, 31, 3, 255},
      {0x80004005u, false, 1, 8, 0, 5}, {0x00000000u, false, 0, 0, 0, 0},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << row.bits);
    const QSResultCodec codec(resultFromBits(row.bits));
    EXPECT_EQ(codec.IsQsResult(), row.marked);
    EXPECT_EQ(codec.Error(), row.error);
    EXPECT_EQ(codec.Project(), row.project);
    EXPECT_EQ(codec.Module(), row.module);
    EXPECT_EQ(codec.Code(), row.code);

    unsigned short out[4] = {77, 77, 77, 77};
    const QSResult result = codec.Decode(out[0], out[1], out[2], out[3]);
    EXPECT_EQ(result, row.marked ? 0 : LTLib::kFailure);
    const unsigned short told[4] = {row.error, row.project, row.module, row.code};
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(out[i], row.marked ? told[i] : 77) << "field " << i;
    }
  }
}

TEST(QSResult, MapsSystemErrors) {
  EXPECT_EQ(LTLib::resultFromSystemError(0), 0);
  EXPECT_EQ(LTLib::resultFromSystemError(-1), resultFromBits(0xFFFFFFFFu));
  EXPECT_EQ(LTLib::resultFromSystemError(234), resultFromBits(0x800700EAu));
  EXPECT_EQ(LTLib::resultFromSystemError(0x10002), resultFromBits(0x80070002u));
}

class Described : public QSException {
 public:
  using QSException::QSException;
  mutable int asked = 0;
  std::string text = "described";

 protected:
  std::string DoWhat() const override {
    ++asked;
    return text;
  }
};

// What each form of construction leaves as message and writes to the tracer.
TEST(QSException, MessageAndTraceOfEachForm) {
  const char* const generic = "Generic application exception: On file: ";
  std::stringstream full;
  full << "from a stream";
  std::stringstream empty;
  std::ostringstream outputOnly;
  outputOnly << "lost";

  struct Case {
    const char* label;
    QSException exception;
    std::string what, trace;
  };
  TraceRecording recording;
  const Case cases[] = {
      {"place", QSException("kfile", 7, LTLib::kFailure), std::string(generic) + "kfile:7",
       "QSLT: QSException constructed at kfile:7"},
      {"place, no file", QSException(nullptr, 0, LTLib::kFailure),
       std::string(generic) + "No specific file info:0",
       "QSLT: QSException constructed at No specific file info:0"},
      {"message", QSException("kfile", 8, LTLib::kFailure, "broken"), "broken",
       "QSException 'broken' constructed at : kfile:8"},
      {"null message", QSException("kfile", 9, LTLib::kFailure, static_cast<const char*>(nullptr)),
       std::string(generic) + "kfile:9",
       "QSException 'No specific error message' constructed at : kfile:9"},
      {"empty message", QSException("kfile", 10, LTLib::kFailure, ""),
       std::string(generic) + "kfile:10", "QSException '' constructed at : kfile:10"},
      {"stream", QSException("kfile", 11, LTLib::kFailure, full), "from a stream",
       "QSException 'from a stream' constructed at : kfile:11"},
      {"consumed stream", QSException("kfile", 12, LTLib::kFailure, full),
       std::string(generic) + "kfile:12",
       "QSException 'No specific error message' constructed at : kfile:12"},
      {"empty stream", QSException("kfile", 13, LTLib::kFailure, empty),
       std::string(generic) + "kfile:13",
       "QSException 'No specific error message' constructed at : kfile:13"},
      {"output-only stream", QSException("kfile", 14, LTLib::kFailure, outputOnly),
       std::string(generic) + "kfile:14",
       "QSException 'No specific error message' constructed at : kfile:14"},
      {"code", QSException(LTLib::kFailure), std::string(generic) + "No specific file info:0",
       "QSException from QSResult : constructed at : No specific file info:0"},
      {"code and message", QSException(LTLib::kFailure, "held"), "held",
       "QSException 'held' from QSResult : constructed at : No specific file info:0"},
      {"code and null message", QSException(LTLib::kFailure, nullptr),
       std::string(generic) + "No specific file info:0",
       "QSException '' from QSResult : constructed at : No specific file info:0"},
  };
  const std::vector<TraceLine> lines = recording.take();
  ASSERT_EQ(lines.size(), std::size(cases));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(cases[i].label);
    EXPECT_EQ(cases[i].exception.What(), cases[i].what);
    EXPECT_STREQ(cases[i].exception.what(), cases[i].what.c_str());
    EXPECT_EQ(cases[i].exception.Result(), LTLib::kFailure);
    EXPECT_EQ(lines[i].text, cases[i].trace);
    EXPECT_EQ(lines[i].file, "kqsresult");
    EXPECT_EQ(lines[i].tag, "QSRESULT:");
    EXPECT_EQ(lines[i].function, "QSException");
    EXPECT_GT(lines[i].line, 0);
  }
}

TEST(QSException, CopiesAndAssignmentsTraceNothingAndDestructorsAll) {
  TraceRecording recording;
  {
    const QSException first("kfile", 1, LTLib::kNotFound, "one");
    recording.take();
    QSException copy(first);
    QSException other("kfile", 2, LTLib::kFailure);
    recording.take();
    other = copy;
    QSException& same = other;
    other = same;
    EXPECT_EQ(other.What(), "one");
    EXPECT_EQ(other.Result(), LTLib::kNotFound);
    EXPECT_EQ(other.Line(), 1);
    EXPECT_TRUE(recording.take().empty());
  }
  const std::vector<TraceLine> lines = recording.take();
  ASSERT_EQ(lines.size(), 3u);
  for (const TraceLine& line : lines) {
    EXPECT_EQ(line.detail, 2);
    EXPECT_EQ(line.text, "QSException destructed");
    EXPECT_EQ(line.function, "~QSException");
  }
}

TEST(QSException, DoWhatIsAskedOnlyWithoutAMessage) {
  const Described silent(LTLib::kFailure);
  EXPECT_EQ(silent.What(), "described");
  EXPECT_EQ(silent.What(), "described");
  EXPECT_EQ(silent.asked, 2);
  const char* text = silent.what();
  EXPECT_EQ(text, silent.what());
  EXPECT_EQ(silent.asked, 3);
  EXPECT_EQ(silent.What(), "described");
  EXPECT_EQ(silent.asked, 3);

  const Described spoken(LTLib::kFailure, "told");
  EXPECT_STREQ(spoken.what(), "told");
  EXPECT_EQ(spoken.asked, 0);

  Described empty(LTLib::kFailure);
  empty.text.clear();
  EXPECT_STREQ(empty.what(), "");
  EXPECT_STREQ(empty.what(), "");
  EXPECT_EQ(empty.asked, 2);
}

}  // namespace
